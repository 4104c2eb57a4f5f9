#pragma once

#include "platform/pointertransform.h"
#include "platform/regularfile.h"

#include <optional>

/// A calibration as it was at one moment, to go back to exactly: the bytes of the file and the
/// transformation that touches went through. Without one in force it holds that, too. Whoever keeps
/// it has nothing to look at in it.
class SavedCalibration
{
    friend class PointerCalibration;

    FileContent file;
    std::optional<PointerTransform> inForce;
};
