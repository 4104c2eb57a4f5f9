#include "platform/touchtype.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/touchscreenpaths.h"

#include <QFileInfo>

#include <algorithm>

namespace {

/// A touch type is one short word; whatever is behind this many bytes is none.
constexpr qint64 PropertyLimit = 256;

bool isSeparator(char c)
{
    // A device-tree string ends with NUL, or several strings are separated by it.
    return c == '\0' || QChar::isSpace(static_cast<uchar>(c));
}

QByteArray firstWord(const QByteArray &text)
{
    const auto begin = std::find_if_not(text.begin(), text.end(), isSeparator);
    const auto end = std::find_if(begin, text.end(), isSeparator);
    return text.mid(begin - text.begin(), end - begin);
}

} // namespace

TouchType readTouchType()
{
    if (!QFileInfo::exists(touchscreenDevice())) {
        return TouchType::None;
    }
    const FileContent property = readRegularFile(
        devicePath(QStringLiteral("/proc/device-tree/qrd-specific/qrd_touch_type")), Links::Follow);
    const QByteArray word = firstWord(property.content.left(PropertyLimit)).toLower();
    return word.contains("multi") ? TouchType::Multi : TouchType::Single;
}
