#include "app/previewtexts.h"

#include "settings/settingsrecord.h"
#include "ui_mainwindow.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {

constexpr auto BlankLabel = QLatin1String("    ");
constexpr int AppNameMargin = 50; // pixels by which a long name stays short of the screen

// Texts of one Ethernet interface.
struct InterfaceTexts
{
    const char *pStaticIp;
    const char *pDhcpIp;
    const char *pNetmask;
    const char *pMac;
};

constexpr InterfaceTexts Texts[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "ETH0 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 MAC: %1")},
    {QT_TRANSLATE_NOOP("MainWindow", "ETH1 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 MAC: %1")},
    {QT_TRANSLATE_NOOP("MainWindow", "ETH2 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 MAC: %1")},
};

/// The label would break the line at some of the control characters, and drop others.
QString oneLine(QString text)
{
    const auto isControl = [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator;
    };
    std::replace_if(text.begin(), text.end(), isControl, u' ');
    return text;
}

} // namespace

PreviewTexts::PreviewTexts(const Ui::MainWindow *form) : pForm(form), rows(form->previewPage)
{
    rows.fit({pForm->label_stopped});
    rows.fit({pForm->label_appname});
    rows.fit({pForm->label_ip, pForm->label_mask, pForm->label_mac});
    pForm->label_dummy->setText(BlankLabel);
}

void PreviewTexts::updateDeviceInfo()
{
    const FirmwareVersions versions = readFirmwareVersions();
    pForm->label_fw->setText(tr("Firmware Version: ") + versions.sFirmware);
    pForm->label_rts->setText(tr("Codesys RTS Version: ") + versions.sRuntime);
    rows.fit({pForm->label_fw, pForm->label_rts});
    if (const auto found = readInterfaceInformation()) {
        interface = found;
        showInterface();
    }
}

void PreviewTexts::showInterface()
{
    const InterfaceTexts &texts = Texts[interface->nInterface];
    pForm->label_ip->setText(interface->bStatic
                                 ? tr(texts.pStaticIp).arg(interface->sIp)
                                 : tr(texts.pDhcpIp).arg(interface->sIp, QLatin1String(" (dhcp)")));
    pForm->label_mask->setText(tr(texts.pNetmask).arg(interface->sNetmask));
    pForm->label_mac->setText(tr(texts.pMac).arg(interface->sMac));
    rows.fit({pForm->label_ip, pForm->label_mask, pForm->label_mac});
}

bool PreviewTexts::isAddressDue() const
{
    return interface && interface->sIp.contains(NoAddress);
}

void PreviewTexts::updateAppName(const std::optional<PlcStatus> &status)
{
    QString name;
    if (status && status->state != PlcStateNoApplication) {
        name = oneLine(status->firstAppName());
    }
    if (name == sLoadedName && !sAppName.isEmpty()) {
        return; // as at nearly every tick: shaping a text costs more than all the rest of it
    }
    sLoadedName = name;
    const int nWidth = QGuiApplication::primaryScreen()->geometry().width() - AppNameMargin;
    sAppName = name.isEmpty()
        ? tr("no codesys application")
        : QFontMetrics(pForm->label_appname->font()).elidedText(name, Qt::ElideRight, nWidth);
    pForm->label_appname->setText(sAppName);
}

void PreviewTexts::restore(const std::optional<PlcStatus> &status)
{
    pForm->label_dummy->setText(BlankLabel);
    if (interface) {
        showInterface(); // nobody may tell it any more
    }
    updateDeviceInfo();
    sAppName.clear();
    updateAppName(status);
}
