#pragma once

#include "bench/support/Figure.h"

namespace quennel::bench {

// One kind of figure each.

/// A free name in a folder with very many taken ones, beside reading that folder once.
void measureFreeNames(Report& report);
/// One small file, beside the bare system calls that a copy is made of.
void measureSmallFile(Report& report);
/// A folder of many small files, beside `cp -a`, on each filesystem.
void measureFolders(Report& report);
/// A large file on filesystems that can share its blocks.
void measureSharedBlocks(Report& report);

}  // namespace quennel::bench
