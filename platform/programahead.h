#pragma once

/// Has the kernel read what the first frame needs of the program into memory while its first lines
/// already run: all of it, but for the code behind that of the first frame where the linker has put
/// that one first. Each page that is missing would be waited for otherwise, one short stretch of
/// the file after the other, in the order in which the start happens to need them: the slowest way
/// to read flash. Does not wait, and cannot fail: what is not read ahead is read when it is needed.
void readProgramAhead();
