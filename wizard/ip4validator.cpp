#include "wizard/ip4validator.h"

#include <QStringList>

#include <algorithm>

namespace {
constexpr int PartCount = 4;
constexpr int MaxPart = 255;
constexpr QLatin1Char Dot('.');
} // namespace

IP4Validator::IP4Validator(QObject *parent) : QValidator(parent)
{ }

IP4Validator::~IP4Validator() = default;

QValidator::State IP4Validator::validate(QString &input, int &mode) const
{
    if (input.isEmpty()) {
        return Acceptable;
    }
    // Counted before splitting: a damaged settings file may hold megabytes here.
    if (input.count(Dot) >= PartCount) {
        return Invalid;
    }
    const QList<QStringView> parts = QStringView(input).split(Dot);
    bool bRepairable = parts.size() < PartCount;
    bool bTooLarge = false;
    quint32 address = 0;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (parts[i].isEmpty()) {
            bRepairable = true;
            continue;
        }
        bool bNumber = false;
        const int value = parts[i].toInt(&bNumber);
        if (!bNumber || value < 0 || (value == 0 && i == 0 && !bZeroFirstOctetAllowed)) {
            return Invalid;
        }
        if (value > MaxPart) {
            if (bTooLarge) {
                return Invalid;
            }
            bTooLarge = true;
        }
        if (parts[i] != QString::number(value)) {
            bRepairable = true;
        }
        address = (address << 8) | static_cast<quint8>(value);
    }
    if (bRepairable || bTooLarge) {
        return Intermediate;
    }
    // The one-bits of a netmask are one unbroken run from the top.
    if (mode != Address && ((~address + 1) & ~address) != 0) {
        return Invalid;
    }
    return Acceptable;
}

void IP4Validator::fixup(QString &input) const
{
    const QList<QStringView> parts = QStringView(input).split(Dot);
    QStringList fixed;
    for (qsizetype i = 0; i < PartCount; ++i) {
        const int value = i < parts.size() ? parts[i].toInt() : 0;
        fixed += QString::number(std::clamp(value, 0, MaxPart));
    }
    input = fixed.join(Dot);
}
