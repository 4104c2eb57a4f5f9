#include "platform/windowserver.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/wizard/wizardtest.h"

#include <QLayout>

class VeltaWizardTest : public WizardTest
{
    Q_OBJECT

private Q_SLOTS:
    void geometry_data()
    {
        const auto row = [](int nWidth, int nHeight, const QRect &area) {
            DeviceTest::row(nameOf({nWidth, nHeight}), QSize(nWidth, nHeight), area);
        };
        row(240, 320, QRect(0, 0, 240, 320));
        row(480, 272, QRect(39, 0, 400, 272));
        row(480, 640, QRect(0, 80, 480, 480));
        row(480, 800, QRect(0, 160, 480, 480));
        row(800, 600, QRect(79, 60, 640, 480));
        row(1920, 1080, QRect(639, 300, 640, 480));
        // Sizes that no class has
        row(2560, 1440, QRect(959, 480, 640, 480));
        row(800, 400, QRect(79, 0, 640, 400));
        row(500, 300, QRect(0, 0, 500, 300));
    }
    void geometry()
    {
        FETCH(QSize, screen, QRect, area);
        setScreen(screen);
        run([&] {
            QCOMPARE(pWizard->geometry(), area);
            QVERIFY(!pWizard->isWindow());
            toSummary(); // by buttons that can be touched
            QVERIFY(pWizard->button(QWizard::NextButton)->font().bold());
            QSet<int> heights; // of the spacers beside an address page's rows
            for (const auto *pLayout : pWizard->page(IpPageId)->findChildren<QLayout *>()) {
                for (int i = 0; i < pLayout->count(); ++i) {
                    QSpacerItem *pSpacer = pLayout->itemAt(i)->spacerItem();
                    heights += pSpacer ? pSpacer->sizeHint().height() : 0;
                }
            }
            const bool bTight = screen.height() == 320 || screen.height() == 272;
            QCOMPARE(heights.contains(5) && heights.contains(15), bTight);
        });
    }

    void pagesInOrder()
    {
        run([&] {
            QCOMPARE(pWizard->currentId(), int(NetModePageId));
            QVERIFY(!pWizard->button(QWizard::BackButton)->isEnabled());
            const QList<bool> buttons = buttonsVisible();
            pWizard->RestoreButtons();
            for (int i = 0; i < 2; ++i) {
                pWizard->HideButtons();
                pWizard->HideButtons();
                QVERIFY(!buttonsVisible().contains(true));
                pWizard->RestoreButtons();
                QCOMPARE(buttonsVisible(), buttons);
            }
            QList<int> ids;
            while (pWizard->currentId() != SummaryPageId) {
                ids += pWizard->currentId();
                QVERIFY(!pWizard->button(QWizard::CustomButton1)->isVisible()
                        && !pWizard->button(QWizard::FinishButton)->isVisible());
                press(QWizard::NextButton);
            }
            QCOMPARE(ids, QList<int>({NetModePageId, IpPageId, DnsPageId}));
            QVERIFY(!pWizard->button(QWizard::NextButton)->isVisible());
            press(QWizard::BackButton);
            QCOMPARE(pWizard->currentId(), ids.last());
        });
        QCOMPARE(QCoreApplication::applicationName(), "service_menu");
    }

    void summary_data()
    {
        row("nothing", StaticSettings, 0, "");
        row("to DHCP", StaticSettings, 1, "Network OP-Mode: Static -> DHCP");
        row("to static", DhcpSettings, 1, "Network OP-Mode: DHCP -> Static");
        row("there and back", StaticSettings, 2, "");
        row("defaulted", QByteArray(StaticSettings).replace("255.255.255.0", "255.0.255.0"), 0,
            "set Netmask to: 255.255.255.0");
    }
    void summary()
    {
        FETCH(QByteArray, file, int, toggles, QString, change);
        create(file);
        run([&] {
            for (int i = 0; i < toggles; ++i) {
                toggleMode();
            }
            toSummary();
            QCOMPARE(changes().join(u' '), change);
            const auto *pLabel = pWizard->findChild<QLabel *>("SummaryLabel");
            const bool bChanged = !change.isEmpty();
            QCOMPARE(pLabel->text(),
                     bChanged ? QStringLiteral("Press SAVE to save all changes or CANCEL to abort.")
                              : "No changes were made so press OKAY to leave "
                                "configuration.");
            QCOMPARE(pWizard->button(QWizard::FinishButton)->text(),
                     bChanged ? QStringLiteral("SAVE") : "OKAY");
            QCOMPARE(pWizard->button(QWizard::CancelButton)->isEnabled(), bChanged);
            press(QWizard::BackButton);
            QVERIFY(pWizard->button(QWizard::CancelButton)->isEnabled());
        });
    }

    void outcome_data()
    {
        const int nFinish = QWizard::FinishButton;
        const int nCancel = QWizard::CancelButton;
        row("save", true, nFinish, "exit 0", true, 0, false);
        row("okay", false, nFinish, "exit 0", false, 0, false);
        row("cancel", true, nCancel, "exit 0", false, 0, false);
        row("tool fails", true, nFinish, "exit 3", false, 1, false);
        row("tool missing", true, nFinish, QByteArray(), false, 1, false);
        row("file in the way", true, nFinish, "exit 0", false, 2,
            true); // at loading, at saving
    }
    void outcome()
    {
        FETCH(bool, change, int, button, QByteArray, syscfg, bool, accepted, int, boxes, bool,
              unwritable);
        if (!syscfg.isEmpty()) {
            root().writeCommand("/bin/syscfg", "echo run >>\"$PANEL_ROOT/log\"\n" + syscfg);
        }
        if (unwritable) {
            root().write("/tmp/newsettings.ini/in-the-way", "");
        }
        if (unwritable) {
            expectWarning("cannot be written");
            expectWarning("nothing is applied");
        }
        const KeyboardFifo keyboard(root(), "keyboard0");
        WindowServer server;
        server.setKeyboardHandler(WindowServer::createKeyboardHandler("/dev/input/keyboard0"));
        BoxWatcher watcher(100); // later than the waiting key
        const bool bResult = run([&] {
            if (change) {
                toggleMode();
            }
            toSummary();
            if (!unwritable) {
                keyboard.type({KEY_ENTER}); // while the tool runs: must close no box unread
            }
            press(QWizard::WizardButton(button));
        });
        QCOMPARE(bResult, accepted);
        QCOMPARE(watcher.texts().size(), boxes);
        const bool bRan =
            !unwritable && change && button == QWizard::FinishButton && !syscfg.isEmpty();
        QCOMPARE(root().read("/log"), QByteArray(bRan ? "run\n" : ""));
    }

    void expertPage()
    {
        create();
        pWizard->AddPage(10, nullptr, true, true); // ignored
        QVERIFY(!pWizard->page(10));
        pWizard->AddPage(ProtectionPageId, new QWizardPage, true, true);
        pWizard->setStartId(ProtectionPageId);
        run([&] {
            QCOMPARE(pWizard->button(QWizard::CustomButton1)->text(), "Expert");
            press(QWizard::CustomButton1);
            QCOMPARE(pWizard->currentId(), int(NetModePageId));
            QVERIFY(!pWizard->button(QWizard::CustomButton1)->isVisible());
            press(QWizard::BackButton);
            QCOMPARE(pWizard->currentId(), int(ProtectionPageId)); // skipped, but the first
        });
    }

    // S, T and R of a keypad: Tab, Backtab, Backspace.
    void keypad()
    {
        run([&] {
            const auto marked = [this] {
                const QList<QPushButton *> buttons = pWizard->findChildren<QPushButton *>();
                return std::ranges::count_if(buttons, &QPushButton::isDefault);
            };
            pWizard->button(QWizard::CancelButton)->setFocus();
            QCOMPARE(marked(), 1); // the focused one alone
            for (int id = IpPageId; id <= SummaryPageId; ++id) {
                press(QWizard::NextButton);
                QCOMPARE(pWizard->currentId(), id);
                const auto *pFocused = qobject_cast<QPushButton *>(QApplication::focusWidget());
                QVERIFY(pFocused && pFocused->isDefault());
                QCOMPARE(marked(), 1);
            }
            pWizard->button(QWizard::CancelButton)->setFocus();
            press(QWizard::BackButton);
            pWizard->button(QWizard::CancelButton)->setFocus();
            QTest::keyClick(pWizard.get(), Qt::Key_S);
            QVERIFY(pWizard->button(QWizard::CancelButton) != QApplication::focusWidget());
            QCOMPARE(marked(), 1);
            QTest::keyClick(pWizard.get(), Qt::Key_T);
            QCOMPARE(QApplication::focusWidget(), pWizard->button(QWizard::CancelButton));
            QTest::keyClick(pWizard.get(), Qt::Key_Escape);
            QVERIFY(pWizard->isVisible()); // only the buttons close it
        });
    }
};

PANEL_TEST_MAIN(VeltaWizardTest)
#include "tst_veltawizard.moc"
