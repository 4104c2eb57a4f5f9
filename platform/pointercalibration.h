#pragma once

#include "platform/pointertransform.h"
#include "platform/savedcalibration.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// What became of measured pairs.
enum class CalibrationOutcome {
    Stored, ///< in force and in the file
    Degenerate, ///< they lie on one line or do not fit; everything is as before
    NotWritten ///< the file could not be written; everything is as before
};

/// The calibration in force and the pointer calibration file behind it.
///
/// tslib applies contentInForce(), never the file itself, which others may break, remove or replace
/// at any time: whoever changes the calibration here has tslib take that over. The file's directory
/// is to be writable while something is stored, restored or accepted. Whatever fails here says so
/// in one warning line. GUI thread only.
class PointerCalibration
{
public:
    /// Takes the file's calibration, if there is a valid one. A broken file is ignored. A
    /// calibration that an earlier run of the program has stored and nobody has accepted is taken
    /// back first, and what a killed run has left beside the file is removed.
    void load();

    /// Puts no calibration in force until calibrate() or restore(). The file stays.
    void clear();

    /// The calibration in force with its file.
    SavedCalibration save() const;
    /// Brings file and calibration back to what they were at \a saved. False when the file could
    /// not follow: then it is as it was, but \a saved is in force all the same.
    bool restore(const SavedCalibration &saved);
    /// Computes the calibration from \a pairs and writes the file. Until accept() or restore() the
    /// next start goes back to \a before. When nothing is stored, the calibration from before is in
    /// force, which clear() may have dropped.
    CalibrationOutcome calibrate(const CalibrationPairs &pairs, const SavedCalibration &before);
    /// A stored calibration stands, and accept() is due.
    static bool isUnaccepted();
    /// Keeps the calibration in the file for good. False when the next start may still take it
    /// back.
    static bool accept();

    /// The checked file content that tslib is to apply; empty when no calibration is in force.
    QByteArray contentInForce() const { return inForce ? inForce->toFile() : QByteArray(); }

private:
    static FileContent readFile();
    static bool writeFile(const QByteArray &content);
    static bool removeFile();
    static bool reinstateFile(const FileContent &file);
    static bool store(const QByteArray &content, const FileContent &before);
    static std::optional<FileContent> takeBackUnaccepted();

    std::optional<PointerTransform> inForce;
    std::optional<PointerTransform> dropped; ///< by clear(), and nothing has come in its place
};
