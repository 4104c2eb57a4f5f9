#pragma once

#include <QString>

/// The directory of the pointer calibration file, writable for as long as this lives.
///
/// Where it is not writable by itself, its file system is remounted for writing, and at the end for
/// reading only, by the device's mount command: at the directory, and where that has no effect, at
/// the mount point that the directory is a part of. Any exit status of the command counts as
/// success; what then cannot be written says so itself. Where the file is a symbolic link, this is
/// the link's directory, not its target's. GUI thread; both ends may take as long as the command.
class CalibrationDirectory
{
public:
    CalibrationDirectory();
    /// protect(), without a word when that fails.
    ~CalibrationDirectory();
    CalibrationDirectory(const CalibrationDirectory &) = delete;
    CalibrationDirectory &operator=(const CalibrationDirectory &) = delete;

    /// False when it is not writable and the command could not run.
    bool isReady() const { return bReady; }
    /// Remounts for reading only what the constructor has remounted, successfully or not. False
    /// when the command could not run; there is no second try.
    bool protect();

private:
    bool makeWritable();

    QString sTarget; ///< what was remounted
    bool bRemounted = false;
    bool bReady = true;
};
