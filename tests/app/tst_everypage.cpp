#include "contactsheet.h"

#include "app/mainwindow.h"
#include "app/restartsequence.h"
#include "calibration/calibrationpage.h"
#include "infobox/veltainfobox.h"
#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"
#include "input/veltainputpanelcontext.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"
#include "tests/support/openkeyboard.h"
#include "wizard/ipaddressespage.h"
#include "wizard/protectionpage.h"
#include "wizard/veltawizard.h"

#include <QAbstractScrollArea>
#include <QGroupBox>
#include <QLCDNumber>
#include <QListWidget>
#include <QProgressBar>
#include <QScrollBar>
#include <QTranslator>

namespace {

constexpr double LeastTargetMm = 5;
constexpr double MmPerInch = 25.4;

/// What a screen cannot give: on the narrow ones ten keys stand in a row of the alphanumeric pad,
/// which no field of the program uses so far. Nor can the smallest ones hold a pseudo-language's
/// brackets besides the longest addresses.
bool isKnown(const QString &screen, const QString &view, const QString &defect, bool bPseudo)
{
    static const QRegularExpression known(
        "^(240x320|320x240|272x480|240x320 dense) AlphaNumInput(-.)? "
        "panelButton_a([A-Z0-9]|dot|slash) is too small for a finger$");
    static const QRegularExpression knownPseudo(
        "^(240x320|272x480|240x320 dense) AlphaNumInput(-.)? panelButton_acancel cuts its text$|"
        "^240x320 dense IPAddressesPage(-changed)? .*IPLineEdit cuts its text$");
    const QString what = screen + ' ' + view + ' ' + defect;
    return known.match(what).hasMatch() || (bPseudo && knownPseudo.match(what).hasMatch());
}

/// A line of text is whole when its ink is: what surrounds it may be cut.
bool showsLine(const QLabel &label)
{
    const QFontMetrics metrics = label.fontMetrics();
    const QRect ink = metrics.tightBoundingRect(label.text().trimmed());
    const int nTop = (label.height() - metrics.height()) / 2 + metrics.ascent() + ink.top();
    return ink.isEmpty()
        || (ink.width() <= label.width() && nTop >= 0 && nTop + ink.height() <= label.height());
}

/// Whether a widget has room for the text that it shows.
bool showsItsText(const QWidget &widget)
{
    const auto holds = [&widget](const QSize &text, int nMargin) {
        return text.width() + nMargin <= widget.width() && text.height() <= widget.height();
    };
    const QFontMetrics metrics = widget.fontMetrics();
    if (const auto *pLabel = qobject_cast<const QLabel *>(&widget)) {
        return pLabel->wordWrap() ? pLabel->heightForWidth(pLabel->width()) <= pLabel->height()
                                  : showsLine(*pLabel) || holds(pLabel->sizeHint(), 0);
    }
    if (const auto *pButton = qobject_cast<const QAbstractButton *>(&widget)) {
        const int nWidth = metrics.horizontalAdvance(pButton->text().replace("&&", "&"));
        return pButton->text().isEmpty() || holds({nWidth, metrics.height()}, 4);
    }
    if (const auto *pEdit = qobject_cast<const QLineEdit *>(&widget)) {
        return holds({metrics.horizontalAdvance(pEdit->displayText()), metrics.height()}, 4);
    }
    if (const auto *pBox = qobject_cast<const QGroupBox *>(&widget)) {
        return holds(metrics.size(Qt::TextShowMnemonic, pBox->title()), 4);
    }
    if (const auto *pArea = qobject_cast<const QAbstractScrollArea *>(&widget)) {
        return pArea->verticalScrollBar()->maximum() == 0;
    }
    return true;
}

bool isLeaf(const QWidget &widget)
{
    return qobject_cast<const QLabel *>(&widget) || qobject_cast<const QAbstractButton *>(&widget)
        || qobject_cast<const QLineEdit *>(&widget) || qobject_cast<const QLCDNumber *>(&widget)
        || qobject_cast<const QProgressBar *>(&widget)
        || qobject_cast<const QAbstractScrollArea *>(&widget);
}

/// Every text that a widget shows.
QStringList textsOf(const QWidget &widget)
{
    if (const auto *pList = qobject_cast<const QListWidget *>(&widget)) {
        QStringList texts;
        for (int i = 0; i < pList->count(); ++i) {
            texts += pList->item(i)->text();
        }
        return texts;
    }
    QStringList texts;
    for (const char *pProperty : {"text", "title", "plainText"}) {
        texts += widget.property(pProperty).toString();
    }
    return texts;
}

/// Whether what a widget shows is in the brackets of the pseudo-language, or none of its business:
/// single keys and marks, the symbols of the keyboard, addresses and names.
bool isTranslated(const QWidget &widget)
{
    static const QRegularExpression letters("[^\\W\\d_]{2}");
    static const QRegularExpression translated("\\[[^][]*\\]|<[^>]*>|/etc/pointercal");
    const QStringList texts = textsOf(widget);
    return widget.objectName() == QLatin1String("label_appname")
        || std::all_of(texts.cbegin(), texts.cend(), [](const QString &text) {
               QString rest = text;
               while (rest.contains(translated)) { // nested
                   rest.remove(translated);
               }
               return !rest.contains(letters) || text == "aA#";
           });
}

QString nameOf(const QWidget &widget)
{
    if (!widget.objectName().isEmpty()) {
        return widget.objectName();
    }
    const auto *pButton = qobject_cast<const QAbstractButton *>(&widget);
    return pButton ? pButton->text() : QString::fromLatin1(widget.metaObject()->className());
}

} // namespace

/// Opens every page of the program at every screen size and looks for what an operator could not
/// read or hit. With PANEL_SCREENSHOTS=FOLDER it also saves a picture of each, and a sheet of all
/// pictures of a screen; see contactsheet.sh.
class EveryPageTest : public DeviceTest
{
    Q_OBJECT

private:
    QSize size;
    int nDpi = 0;
    QString screenName;
    QStringList defects;
    QTranslator translator;
    bool bPseudo = false; ///< It puts every text into brackets.
    std::optional<ContactSheet> sheet; ///< only where pictures are asked for

    /// PANEL_TRANSLATION names the compiled translation to see everything in; a "%1" in it stands
    /// for how much longer its texts are than English, in percent, as far as the screen has room.
    void speak(const QSize &screen)
    {
        const bool bRoomy = screen.width() * screen.height() >= 480 * 272;
        const QString file = qEnvironmentVariable("PANEL_TRANSLATION");
        if (!file.isEmpty()) {
            bPseudo = file.contains("%1");
            QVERIFY(translator.load(bPseudo ? file.arg(bRoomy ? 40 : 15) : file));
            QCoreApplication::installTranslator(&translator);
        }
    }

    void inspect(const QString &view, QWidget &root)
    {
        processAll(); // layouts that are posted, too
        QVERIFY(QTest::qWaitForWindowActive(root.window()));
        const QRect screen(QPoint(), size);
        QList<const QWidget *> leaves;
        const auto report = [&](const QWidget &widget, const QString &what) {
            const QString defect = nameOf(widget) + ' ' + what;
            if (!isKnown(screenName, view, defect, bPseudo)) {
                defects += view + ": " + defect;
            }
        };
        QList<QWidget *> widgets = root.findChildren<QWidget *>();
        widgets.prepend(&root);
        for (const QWidget *pWidget : std::as_const(widgets)) {
            if (!pWidget->isVisible() || pWidget->visibleRegion().isEmpty()) {
                if (pWidget->isVisible() && isLeaf(*pWidget) && pWidget->width() > 0) {
                    report(*pWidget, "is covered");
                }
                continue;
            }
            const QRect place(pWidget->mapToGlobal(QPoint()), pWidget->size());
            if (!screen.contains(place)) {
                report(*pWidget, "stands outside of the screen");
            }
            if (!showsItsText(*pWidget)) {
                report(*pWidget, "cuts its text");
            }
            if (bPseudo && !isTranslated(*pWidget)) {
                report(*pWidget, "is not translated");
            }
            if (!isLeaf(*pWidget)) {
                continue;
            }
            if (pWidget->visibleRegion().boundingRect() != pWidget->rect()) {
                report(*pWidget, "is cut off");
            }
            for (const QWidget *pOther : std::as_const(leaves)) {
                if (!pOther->isAncestorOf(pWidget)
                    && place.intersects({pOther->mapToGlobal(QPoint()), pOther->size()})) {
                    report(*pWidget, "overlaps " + nameOf(*pOther));
                }
            }
            leaves += pWidget;
            if (qobject_cast<const QAbstractButton *>(pWidget) && pWidget->isEnabled()) {
                const int nShort = qMin(pWidget->width(), pWidget->height());
                if (nShort * MmPerInch / nDpi < LeastTargetMm) {
                    report(*pWidget, "is too small for a finger");
                }
            }
        }
        if (sheet && !sheet->add(view, root.window()->grab().toImage())) {
            report(root, "is not as it was");
        }
    }

    void inspectMainWindow(MainWindow &window)
    {
        inspect("start", window);
        if (screenName == QLatin1String("320x240") && translator.isEmpty()) {
            QCOMPARE(window.findChild<QLabel *>("label_startpage")->font().pointSize(), 28);
        }
        window.controlVisibility();
        window.controlVisibility();
        inspect("preview", window);
        window.setCurrentWidget(window.findChild<QWidget *>("rebootPage"));
        inspect("reboot", window);
        auto *pRestart = window.findChild<RestartSequence *>();
        for (const auto event : {RestartSequence::Event::TimeUp, RestartSequence::Event::Failed}) {
            pRestart->handle(RestartSequence::Event::Asked);
            pRestart->handle(event);
            inspect(QStringLiteral("reboot-again-%1").arg(int(event)), window);
        }
    }

    void inspectWizard()
    {
        QWidget window; // not the main window: its ticks, which rest around the wizard, would run
        window.setGeometry(QRect(QPoint(), size));
        window.setWindowFlags(Qt::FramelessWindowHint);
        window.show();
        VeltaWizard wizard(&window);
        wizard.show();
        QTRY_VERIFY(openKeyboard());
        inspect("ProtectionPage-keyboard", *openKeyboard()->window());
        openKeyboard()->window()->hide();
        inspect("ProtectionPage", wizard);
        wizard.RestoreButtons();
        visitPages(wizard, [&](const QString &page) { inspect(page, wizard); });
        // The more changes there are to tell, the smaller is the text, but from the first time on.
        const auto nPoints = [pLabel = wizard.findChild<QLabel *>("SummaryLabel")] {
            return pLabel->font().pointSize();
        };
        visitPages(wizard, [&](const QString &) { changeAddresses(wizard); });
        const int nBefore = nPoints();
        visitPages(wizard, [&](const QString &page) {
            if (wizard.currentId() == NetModePageId) {
                wizard.findChild<QPushButton *>("NetOpModeSelectButton")->click();
            }
            inspect(page + "-changed", wizard);
        });
        QCOMPARE(wizard.findChild<QListWidget *>()->count(), 6);
        QVERIFY(nBefore >= nPoints());
    }

    /// Shows every page that no password is needed for, in the order of the ids.
    static void visitPages(VeltaWizard &wizard, const std::function<void(const QString &)> &visit)
    {
        wizard.RestartAtSecondPage();
        QList<int> ids = wizard.pageIds();
        ids.removeOne(ProtectionPageId);
        for (const int nId : std::as_const(ids)) {
            QCOMPARE(wizard.currentId(), nId);
            visit(QLatin1String(wizard.currentPage()->metaObject()->className()));
            wizard.next();
        }
    }

    /// Enters the longest address that is also a netmask into every field of the page.
    void changeAddresses(const VeltaWizard &wizard)
    {
        const QWizardPage *pPage = wizard.currentPage();
        const QString page = QLatin1String(pPage->metaObject()->className());
        const auto buttons = pPage->findChildren<QPushButton *>();
        for (QPushButton *pButton : buttons) {
            if (!pButton->isVisible() || wizard.currentId() == NetModePageId) {
                continue;
            }
            pButton->click();
            const VeltaInputPanel *pKeyboard = openKeyboard();
            QVERIFY2(pKeyboard, qPrintable(pButton->objectName()));
            if (pButton == buttons.constFirst()) {
                inspect(page + "-keyboard", *pKeyboard->window());
            }
            pKeyboard->findChild<QVeltaLineEdit *>()->setText("255.255.255.254");
            pKeyboard->findChild<QPushButton *>("panelButton_ok")->click();
        }
    }

    void inspectPads()
    {
        for (const char *mode : {"HexInput", "AlphaNumInput"}) {
            QLineEdit target;
            QLabel label(IPAddressesPage::tr("Netmask: "));
            target.setWhatsThis(QLatin1String(mode));
            VeltaInputPanelContext context(&target, &label, false, quint16(size.width()),
                                           quint16(size.height()));
            context.showPanel();
            inspect(QLatin1String(mode), context);
            for (int nLevel = 1; nLevel < 3 && *mode == 'A'; ++nLevel) {
                context.findChild<QPushButton *>("panelButton_aMode")->click();
                inspect(QStringLiteral("%1-%2").arg(QLatin1String(mode)).arg(nLevel), context);
            }
        }
    }

    void inspectBoxes()
    {
        const auto show = [this](const QString &view, qint16 nCode, const QString &text,
                                 quint8 nCountdown) {
            QTimer::singleShot(0, this, [this, view] {
                auto *pBox = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                QVERIFY(pBox);
                inspect(view, *pBox);
                pBox->reject();
            });
            VeltaInfoBox box(nCode, text, nCountdown, nullptr, true, true);
        };
        const QString tries =
            ProtectionPage::tr(" You have %1 %2 left.").arg(2).arg(ProtectionPage::tr("tries"));
        show("box-password", ERR_PASSWORD, tries, 10);
        show("box-address", ERR_IP_DATA_INVALID, IPAddressesPage::tr("netmask"), 0);
        show("box-long", ERR_CAL_TIMEOUT, QString(), 0);
        for (const ErrorEntry *pEntry = errorCatalogue;
             !translator.isEmpty() && pEntry->nCode != ERR_END; ++pEntry) {
            show(QStringLiteral("box%1").arg(pEntry->nCode), pEntry->nCode, "/etc/pointercal", 0);
        }
        // Whatever is to be read, in dense letters.
        root().write("/proc/device-tree/qrd-specific/qrd_dpi_x_resolution", "220");
        const bool bWhatever =
            translator.isEmpty() && !sheet && !screenName.contains(u' ') && size.width() % 240 == 0;
        for (const char *pText : {"", "/very/long/name", "longname", "a b<c> "}) {
            for (const int nCode : {0, 3, int(ERR_BROWSER_NOT_FOUND), int(ERR_FILE_OPEN_ABORT)}) {
                if (bWhatever) {
                    show(QStringLiteral("box%1 %2").arg(nCode).arg(pText), qint16(nCode),
                         QString(pText).repeated(500), 120);
                }
            }
        }
        root().remove("/proc/device-tree/qrd-specific/qrd_dpi_x_resolution");
    }

private Q_SLOTS:
    void everyPage_data()
    {
        for (const PanelScreen &screen : panelScreens()) {
            row(nameOf(screen.size), screen.size, screen.nDpi, 96);
        }
        // As a framebuffer reports it that knows its size: points are larger then.
        row("800x480 dense", QSize(800, 480), 186, 186);
        row("480x640 dense", QSize(480, 640), 160, 160);
        row("240x320 dense", QSize(240, 320), 143, 143);
    }
    void everyPage()
    {
        FETCH(QSize, screen, int, dpi, int, logicalDpi);
        size = screen;
        nDpi = dpi;
        screenName = QString::fromLatin1(QTest::currentDataTag());
        defects.clear();
        speak(screen);
        if (qEnvironmentVariableIsSet("PANEL_SCREENSHOTS")) {
            sheet.emplace(screenName);
        }
        setScreen(screen, logicalDpi);
        root().write("/etc/settings.ini",
                     "[options]\nconfig_passwd=1234\n[network]\neth0.mode=static\n"
                     "eth0.ip=255.255.255.255\neth0.netmask=255.255.255.255\n"
                     "default_gateway=255.255.255.255\ndnsserver1=255.255.255.255\n"
                     "dnsserver2=255.255.255.255\n");
        root().write("/etc/fwinfo.ini",
                     "[firmware]\nversion=03.10.08(22)\n[codesys]\nversion=3.5.19.30-7/19\n");
        root().setFirmware("state=2 app.0=Conveyor eth0.mode=dhcp eth0.ip=255.255.255.255 "
                           "eth0.netmask=255.255.255.255");

        const WindowServer server;
        {
            MainWindow window;
            QVERIFY(QTest::qWaitForWindowActive(&window));
            inspectMainWindow(window);
        }
        inspectWizard();
        inspectPads();
        inspectBoxes();
        {
            CalibrationPage page;
            page.showFullScreen();
            inspect("calibration", page);
            page.CalibrationDone();
            inspect("calibration-accept", page);
        }
        if (sheet) {
            defects += sheet->finish();
        }
        defects.removeDuplicates();
        for (const QString &defect : std::as_const(defects)) {
            qInfo().noquote() << defect; // a failure's own message is cut
        }
        QVERIFY2(defects.isEmpty(), qPrintable(defects.join(", ")));
    }
};

PANEL_TEST_MAIN(EveryPageTest)
#include "tst_everypage.moc"
