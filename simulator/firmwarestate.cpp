#include "simulator/firmwarestate.h"

#include <QFile>

#include <algorithm>

namespace {

const QString StateFile = QStringLiteral("/simulator/firmware.state");
constexpr char Header[] = "[firmware]";

/// \a value with what a line cannot hold, or a reader would cut off, as \xNN.
QByteArray escaped(const QString &value)
{
    const QByteArray bytes = value.toUtf8();
    QByteArray result;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<uchar>(bytes.at(i));
        if (byte < ' ' || (byte == ' ' && (i == 0 || i == bytes.size() - 1))) {
            result += "\\x" + QByteArray(1, bytes.at(i)).toHex();
        } else {
            result += bytes.at(i);
        }
    }
    return result;
}

} // namespace

FirmwareState::FirmwareState(const DeviceFolder &folder) : device(folder)
{
    QFile file(device.path(StateFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    bool inState = false;
    for (const QByteArray &line : lines) {
        if (!inState) {
            if (const QByteArray text = line.trimmed(); !text.isEmpty() && text != Header) {
                return;
            }
            inState = line.trimmed() == Header;
        } else if (const qsizetype equals = line.indexOf('='); equals > 0) {
            set(QString::fromUtf8(line.left(equals).trimmed()),
                QString::fromUtf8(line.mid(equals + 1)));
        }
    }
}

void FirmwareState::set(const QString &key, const QString &value)
{
    const auto it = std::find_if(entries.begin(), entries.end(),
                                 [&](const auto &entry) { return entry.first == key; });
    if (it == entries.end()) {
        entries.append({key, value});
    } else {
        it->second = value;
    }
}

void FirmwareState::remove(const QString &key)
{
    entries.removeIf([&](const auto &entry) { return entry.first == key; });
}

void FirmwareState::removeAll(const QString &prefix)
{
    entries.removeIf([&](const auto &entry) { return entry.first.startsWith(prefix); });
}

bool FirmwareState::save() const
{
    QByteArray text = QByteArray(Header) + '\n';
    for (const auto &[key, value] : entries) {
        text += key.toUtf8() + '=' + escaped(value) + '\n';
    }
    return device.write(StateFile, text);
}
