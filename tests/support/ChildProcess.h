#pragma once

#include <functional>
#include <string>

namespace quennel::test {

/// What `body` answers in a child process: for code whose effects last as long as its process (an
/// environment read once, a library that stays loaded). A child that dies answers
/// "died with status N".
std::string inChildProcess(const std::function<std::string()>& body);

}  // namespace quennel::test
