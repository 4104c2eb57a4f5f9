#pragma once

/// Has the kernel read the whole program into memory while its first lines already run. Each page
/// that is missing would be waited for otherwise, one short stretch of the file after the other, in
/// the order in which the start happens to need them: the slowest way to read flash. Does not wait,
/// and cannot fail: what is not read ahead is read when it is needed.
void readProgramAhead();
