#pragma once

#include "input/inputkeys.h"

#include <QFont>
#include <QObject>

#include <array>
#include <vector>

class QGridLayout;
class QPushButton;
class QWidget;
class VeltaUtils;

/// The keys of the three key pads: makes them in their pages, lays them out and finds them.
///
/// A key's value is held by its button, as the property "buttonValue"; the table of keys says what
/// it is at each shift level. The buttons belong to their pages, which outlive this object. GUI
/// thread only.
class KeyPads : public QObject
{
    Q_OBJECT

public:
    /// The page of one pad. Its layout is a grid that holds what follows.
    struct Page
    {
        QWidget *pPage = nullptr;
        QGridLayout *pCharacters = nullptr; ///< null: the page's own, each row centred by itself
        QGridLayout *pSpecials = nullptr; ///< null: the page's own
    };
    /// One for each KeyPad.
    using Pages = std::array<Page, 3>;

    KeyPads(const Pages &pages, QObject *parent);
    ~KeyPads() override;

    /// Gives each key \a font in the size of its style, scaled to the screen class
    /// \a screenClass.
    void scaleFonts(const QFont &font, VeltaUtils *utils, int screenClass);
    /// Gives the focused key a grey background; the mode key only with \a modeKeyToo.
    void highlightFocus(bool modeKeyToo);
    /// Shares \a area among the keys of \a pad, below an empty row \a headroom high (pixels).
    /// Returns what the page takes of it.
    QSize layOut(KeyPad pad, const QSize &area, int headroom);
    /// Fits the labels of all keys into the keys, at every shift level.
    void fitFonts();
    /// Goes on to the next shift level, from the last to the first.
    void shift();
    /// Lets go of keys that are held down.
    void release();

    QWidget *page(KeyPad pad) const;
    std::vector<QPushButton *> buttons() const;
    /// Null when \a widget is no key.
    const KeySpec *specOf(const QWidget *widget) const;
    /// The first key of \a pad that does \a action.
    QPushButton *button(KeyPad pad, KeyAction action) const;
    /// The key of \a pad that has the value \a character now; null when none has.
    QPushButton *button(KeyPad pad, QChar character) const;
    /// The value that \a key has now, or the null character.
    static QChar value(const QWidget *key);

Q_SIGNALS:
    void clicked(QPushButton *key);

private:
    struct Key
    {
        const KeySpec *pSpec;
        QPushButton *pButton;
        QFont scaledFont; ///< as large as the key may have it on this screen
    };

    void createKey(const KeySpec &spec);
    void place(const KeySpec &spec, QPushButton *button);
    void placeInRow(int row, QPushButton *button);
    void showLevel(const Key &key) const;

    Pages pages;
    std::vector<Key> keys;
    int nShiftLevel = 0;
};
