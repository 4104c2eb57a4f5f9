#pragma once

#include <QObject>

/// Keeps a Return that is held down from pressing one button after the other: installed on the
/// application, it swallows auto-repeated Return and Enter on their way to a button. A gloved
/// finger that rests on the key must not run through the wizard to SAVE.
class KeyRepeatFilter : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *receiver, QEvent *event) override;
};
