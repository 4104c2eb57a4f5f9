#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <optional>

/// One keystroke of a PC keyboard: key codes of <linux/input-event-codes.h>, held modifiers first.
struct KeyStroke
{
    QList<int> modifiers;
    int nCode = 0;
    /// How long the key is held; it then repeats as the kernel's input core lets it.
    std::chrono::milliseconds hold{0};
};

/// The keystrokes that type \a text on a keyboard with a US layout. "<Return>", "<Left>",
/// "<Shift+Tab>" and the like are keys, "<Left:800>" is one held for 800 ms, "<lt>" is "<".
/// Nothing, with \a wrong set to the culprit, when there is no key for a part of it.
std::optional<QList<KeyStroke>> keyStrokes(const QString &text, QString *wrong);

/// A key map for Qt's evdev keyboard handler (a ".qmap" file) with the German layout.
QByteArray germanKeyMap();
