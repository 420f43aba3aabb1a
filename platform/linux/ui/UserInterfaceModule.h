#pragma once

namespace quennel {

class Bundle;
class RunLoop;
class UserInterface;

// The boundary between the helper and its user-interface module, a shared object that is loaded
// when something is to be shown first. Both sides are built from the same sources. What crosses is
// virtual calls and plain values: no exception, no run-time type, nothing of the toolkit, so the
// helper may have its own static copy of the C++ library.

/// What the module exports under the name `makeUserInterfaceSymbol`. The run loop and the
/// bundle, where texts come from, are not owned and outlive the result, which the caller deletes.
using MakeUserInterface = UserInterface*(RunLoop& runLoop, const Bundle& bundle);

inline constexpr const char* makeUserInterfaceSymbol = "quennelMakeUserInterface";

}  // namespace quennel
