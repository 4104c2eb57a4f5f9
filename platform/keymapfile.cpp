#include "platform/keymapfile.h"

#include "platform/regularfile.h"

#include <QDataStream>

namespace {

constexpr quint32 Magic = 0x514d4150; // "QMAP"
constexpr quint32 Version = 1;
// Bytes of the parts of a file.
constexpr quint64 HeaderSize = 16;
constexpr quint64 KeySize = 12;
constexpr quint64 ComposedKeySize = 6;

} // namespace

QString keyMapFault(const QByteArray &file)
{
    QDataStream stream(file);
    quint32 nMagic = 0;
    quint32 nVersion = 0;
    quint32 nKeys = 0;
    quint32 nComposedKeys = 0;
    stream >> nMagic >> nVersion >> nKeys >> nComposedKeys;
    if (stream.status() != QDataStream::Ok || nMagic != Magic || nVersion != Version) {
        return QStringLiteral("it does not begin like one");
    }
    const quint64 nSize = HeaderSize + nKeys * KeySize + nComposedKeys * ComposedKeySize;
    if (nKeys == 0 || nSize != static_cast<quint64>(file.size())) {
        return QStringLiteral("%1 keys and %2 composed ones do not fit its %3 bytes")
            .arg(nKeys)
            .arg(nComposedKeys)
            .arg(file.size());
    }
    return {};
}

bool isKeyMapUsable(const QString &path)
{
    const FileContent file = readRegularFile(path, Links::Follow);
    const QString fault = file.state == FileContent::Absent ? QStringLiteral("there is none")
        : file.state == FileContent::Unreadable             ? file.sError
                                                            : keyMapFault(file.content);
    if (!fault.isEmpty()) {
        qWarning("The key map %s is not used: %s", qPrintable(path), qPrintable(fault));
    }
    return fault.isEmpty();
}
