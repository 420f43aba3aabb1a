#pragma once

namespace quennel {

class RunLoop;
class UserInterface;

// The boundary between the helper and its user-interface module, a shared object that is loaded
// when something is to be shown first. Both sides are built from the same sources. What crosses is
// virtual calls and plain values: no exception, no run-time type, nothing of the toolkit, so the
// helper may have its own static copy of the C++ library.

/// What the module exports under the name `makeUserInterfaceSymbol`. The run loop is not owned and
/// outlives the result, which the caller deletes.
using MakeUserInterface = UserInterface*(RunLoop& runLoop);

inline constexpr const char* makeUserInterfaceSymbol = "quennelMakeUserInterface";

}  // namespace quennel
