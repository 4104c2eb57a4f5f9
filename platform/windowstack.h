#pragma once

#include <QList>

class QWidget;

/// The program's visible windows from the lowest to the topmost: plain ones, those that stay on
/// top, modal ones; of one kind the newest is on top. The embedded platforms stack windows in the
/// order of their last show or raise, whatever their kind.
QList<QWidget *> visibleWindows();
