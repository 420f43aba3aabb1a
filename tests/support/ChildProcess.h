#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quennel::test {

/// What `body` answers in a child process: for code whose effects last as long as its process (an
/// environment read once, a library that stays loaded). A child that dies answers
/// "died with status N".
std::string inChildProcess(const std::function<std::string()>& body);

/// The same in `count` processes at once. All are children of the calling thread: a child of a
/// program that has several threads inherits whatever lock another one of them holds.
std::vector<std::string> inChildProcesses(int count, const std::function<std::string()>& body);

}  // namespace quennel::test
