#pragma once

#include "platform/pointertransform.h"

#include <QByteArray>

#include <optional>
#include <vector>

/// The calibration in force and the pointer calibration file behind it.
///
/// tslib applies contentInForce(), never the file itself, which others may break, remove or replace
/// at any time: whoever changes the calibration here has tslib take that over. GUI thread only.
class PointerCalibration
{
public:
    /// Takes the file's calibration, if there is a valid one. A broken file is ignored with one
    /// warning line.
    void load();

    /// Puts no calibration in force until calibrate(). The file stays.
    void clear();

    /// Computes the calibration from \a data and writes the file. With \a bRestore brings file and
    /// calibration back to what they were when getCalibration() handed out \a data.
    /// When that fails (one warning line) the file stays as it is. A calibration to be restored is
    /// in force all the same; else it is the one from before, which clear() may have dropped.
    bool calibrate(const PointerCalibrationData &data, bool bRestore);

    /// Fills data->devPoints for data->screenPoints and remembers the pairs for calibrate().
    void getCalibration(PointerCalibrationData *data);

    /// The checked file content that tslib is to apply; empty when no calibration is in force.
    QByteArray contentInForce() const { return inForce ? inForce->toFile() : QByteArray(); }

private:
    struct File
    {
        enum State { Absent, Readable, Unreadable };

        State state = Absent;
        QByteArray content; ///< whole, of a readable file
        friend bool operator==(const File &, const File &) = default;
    };
    struct HandedOut
    {
        PointerCalibrationData data;
        File file;
        std::optional<PointerTransform> inForce;
    };

    static File readFile();
    bool writeFile(const QByteArray &content);
    static bool removeFile();
    bool reinstateFile(const File &file);

    std::optional<PointerTransform> inForce;
    std::optional<PointerTransform> dropped; ///< by clear(), and nothing has come in its place
    std::vector<HandedOut> handedOut;
    QByteArray lastWritten; ///< into the file by this object
};
