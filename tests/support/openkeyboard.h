#pragma once

#include "input/veltainputpanel.h"

#include <QApplication>

/// The on-screen keyboard that is open; null when none is.
inline VeltaInputPanel *openKeyboard()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget *pWindow : windows) {
        auto *pPanel = pWindow->findChild<VeltaInputPanel *>();
        if (pPanel && pPanel->isVisible()) {
            return pPanel;
        }
    }
    return nullptr;
}
