#pragma once

#include "app/deviceinformation.h"
#include "app/rowfit.h"
#include "platform/firmware.h"

#include <QCoreApplication>
#include <QString>

#include <optional>

namespace Ui {
class MainWindow;
}

/// What the preview page says about the device and the PLC, in labels of the form that have only
/// examples of it. GUI thread.
class PreviewTexts
{
    Q_DECLARE_TR_FUNCTIONS(MainWindow)

public:
    /// \a form outlives this. The fonts that its labels have now are the largest they ever get.
    explicit PreviewTexts(const Ui::MainWindow *form);

    /// Reads versions and address data and shows them. Cheap when nothing changed: equal texts
    /// cause no repaint. Where no interface is known (any more) the last one stays.
    void updateDeviceInfo();
    /// The address shown is still to come.
    bool isAddressDue() const;
    /// Shows the name of the first loaded application; \a status: nothing while there is no link.
    void updateAppName(const std::optional<PlcStatus> &status);
    /// Shows everything again after the form has put its own texts into the labels.
    void restore(const std::optional<PlcStatus> &status);

private:
    void showInterface();

    const Ui::MainWindow *pForm;
    RowFit rows;
    std::optional<InterfaceInformation> interface; ///< as shown
    QString sAppName; ///< as shown
    QString sLoadedName; ///< as the runtime reports it
};
