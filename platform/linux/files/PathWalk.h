#pragma once

#include <sys/stat.h>

#include <string>

namespace quennel {

/// Whether the way to `path` leads through `item`, so that nothing would be found there if it were
/// gone: it is the item at `path`, a folder above it, or a link on the way, known by device and
/// number whatever the path calls it. False for a path at which nothing is.
bool leadsThrough(const std::string& path, const struct stat& item);

}  // namespace quennel
