#include "tests/support/openkeyboard.h"

#include "input/veltainputpanel.h"

#include <QApplication>

VeltaInputPanel *openKeyboard()
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
