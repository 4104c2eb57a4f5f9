#include "tests/support/testmain.h"
#include "tests/wizard/wizardtest.h"

namespace {

struct Field
{
    WizardPageIndex page;
    QString button;
    QString edit;
    IpEntryIndex entry;
};

// In the order of the pages.
enum FieldIndex { Address, Netmask, Gateway, Dns1, Dns2 };
const QList<Field> Fields = {
    {IpPageId, "FirstIPButton", "FirstIPLineEdit", AddressEntry},
    {IpPageId, "SecondIPButton", "SecondIPLineEdit", NetmaskEntry},
    {IpPageId, "ThirdIPButton", "ThirdIPLineEdit", GatewayEntry},
    {DnsPageId, "dns1_ip_Button", "dns1_ip_Edit", Dns1Entry},
    {DnsPageId, "dns2_ip_Button", "dns2_ip_Edit", Dns2Entry},
};

const QByteArray Protection = "[options]\nconfig_passwd=1234\nconfig_protection_enabled=1\n";

QString wrongPassword(const QString &note)
{
    return QStringLiteral("Error -226: Password incorrect. Please enter correct password to enter "
                          "configuration")
        + note;
}

} // namespace

class WizardPagesTest : public WizardTest
{
    Q_OBJECT

private:
    // What the operator sees; the digits of a field stand at the front of their parts.
    QString shown(const char *edit) const
    {
        const auto *pEdit = find<QLineEdit>(QLatin1String(edit));
        QLineEdit fresh;
        fresh.setInputMask(pEdit->inputMask());
        fresh.setText(pEdit->text());
        return pEdit->displayText() == fresh.displayText() ? pEdit->text() : pEdit->displayText();
    }
    QString label(const char *name) const { return find<QLabel>(QLatin1String(name))->text(); }
    bool anyWizardButtonVisible() const
    {
        for (const auto which : {QWizard::BackButton, QWizard::CancelButton, QWizard::NextButton,
                                 QWizard::FinishButton}) {
            if (pWizard->button(which)->isVisible()) {
                return true;
            }
        }
        return false;
    }

    // The operator's hand on the screen or, with bKeys, on a keypad without a touchscreen.
    bool bKeys = false;

    static void type(Qt::Key code)
    {
        QTRY_VERIFY(QGuiApplication::focusWindow()); // the window system hands the keys over
        QTest::keyClick(QGuiApplication::focusWindow(), code);
    }

    void activate(QWidget *pWidget)
    {
        QVERIFY(pWidget && pWidget->isVisible() && pWidget->isEnabled());
        if (!bKeys) {
            touch(pWidget);
            return;
        }
        for (int i = 0; i < 20 && QApplication::focusWidget() != pWidget; ++i) {
            type(Qt::Key_S);
        }
        QCOMPARE(QApplication::focusWidget(), pWidget);
        type(Qt::Key_Return);
    }
    void activate(QWizard::WizardButton which) { activate(pWizard->button(which)); }

    void enterAndConfirm(const QString &text)
    {
        if (!bKeys) {
            enter(text);
            touch(key(QStringLiteral("ok")));
            return;
        }
        const auto nLength = openKeyboard()->lineEdit()->displayText().size();
        for (int i = 0; i < nLength; ++i) {
            type(Qt::Key_Right);
        }
        for (int i = 0; i < nLength; ++i) {
            type(Qt::Key_R);
        }
        for (const QChar c : text) {
            type(Qt::Key(c.unicode()));
        }
        activate(key(QStringLiteral("ok")));
    }

private Q_SLOTS:
    void cleanup()
    {
        closeWizard();
        DeviceTest::cleanup();
    }

    void entry_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("entered");
        QTest::addColumn<QString>("field"); // afterwards
        QTest::addColumn<QString>("change"); // what the summary says, empty: nothing
        QTest::addColumn<QString>("refused"); // the name in the message, empty: accepted

        const auto stored = [](int nIndex, const char *entered, const char *field,
                               const char *change) {
            QTest::addRow("%d '%s'", nIndex, entered)
                << nIndex << QString(entered) << QString(field) << QString(change) << QString();
        };
        const auto refused = [](int nIndex, const char *entered, const char *field,
                                const char *name) {
            QTest::addRow("%d '%s' refused", nIndex, entered)
                << nIndex << QString(entered) << QString(field) << QString() << QString(name);
        };
        const auto untouched = [](int nIndex, const char *entered) {
            QTest::addRow("%d '%s' again", nIndex, entered)
                << nIndex << QString(entered) << QString(entered) << QString() << QString();
        };
        stored(Address, "10.1.2.3", "10.1.2.3", "Address: 192.168.0.10 -> 10.1.2.3");
        stored(Address, "192.168.0.300", "192.168.0.255", "Address: 192.168.0.10 -> 192.168.0.255");
        stored(Address, "10.>>>0.1", "10.0.0.1", "Address: 192.168.0.10 -> 10.0.0.1");
        stored(Address, "010.001.000.009", "10.1.0.9", "Address: 192.168.0.10 -> 10.1.0.9");
        stored(Address, "1>2.8.8.8", "12.8.8.8", "Address: 192.168.0.10 -> 12.8.8.8");
        stored(Address, "9", "9.0.0.0", "Address: 192.168.0.10 -> 9.0.0.0");
        stored(Address, "", "...", "Address: 192.168.0.10 -> ");
        untouched(Address, "192.168.0.10");
        refused(Address, "0.0.0.0", "192.168.0.10", "address");
        refused(Address, "300.300.1.1", "192.168.0.10", "address");
        stored(Netmask, "255.255.254.0", "255.255.254.0",
               "Netmask: 255.255.255.0 -> 255.255.254.0");
        stored(Netmask, "255.255", "255.255.0.0", "Netmask: 255.255.255.0 -> 255.255.0.0");
        stored(Netmask, "", "...", "Netmask: 255.255.255.0 -> ");
        refused(Netmask, "255.255.0.255", "255.255.255.0", "netmask");
        refused(Netmask, "0.0.0.0", "255.255.255.0", "netmask");
        stored(Gateway, "0.0.0.0", "0.0.0.0", "Gateway: 192.168.0.1 -> 0.0.0.0");
        stored(Gateway, "255.0.255.0", "255.0.255.0", "Gateway: 192.168.0.1 -> 255.0.255.0");
        refused(Gateway, "256.256.1.1", "192.168.0.1", "gateway");
        stored(Dns1, "1.2.3.400", "1.2.3.255", "DNS 1: 192.168.0.2 -> 1.2.3.255");
        stored(Dns1, "0.0.0.0", "0.0.0.0", "DNS 1: 192.168.0.2 -> 0.0.0.0");
        stored(Dns1, "", "...", "DNS 1: 192.168.0.2 -> ");
        untouched(Dns2, "0.0.0.0");
        stored(Dns2, "8.8.8.8", "8.8.8.8", "DNS 2: 0.0.0.0 -> 8.8.8.8");
        refused(Dns2, "300.300.1.1", "0.0.0.0", "dns2");
    }
    void entry()
    {
        QFETCH(int, index);
        QFETCH(QString, entered);
        QFETCH(QString, refused);
        QFETCH(QString, change);
        const Field &field = Fields[index];
        writeSettings(staticFile);
        BoxWatcher watcher;
        create();
        run([&] {
            toPage(field.page);
            touch(find(field.button));
            QVERIFY(openKeyboard());
            enter(entered);
            touch(key(QStringLiteral("ok")));
            QVERIFY(!openKeyboard());
            QTEST(find<QLineEdit>(field.edit)->text(), "field");
            toSummary();
            QCOMPARE(changes(), change.isEmpty() ? QStringList() : QStringList(change));
        });
        const auto text =
            QStringLiteral("Error -201: %1 ip-data is not valid. Please enter correct data.");
        QCOMPARE(watcher.texts(),
                 refused.isEmpty() ? QStringList() : QStringList(text.arg(refused)));
    }

    // A second entry starts from what the first one left; a cancelled one leaves no trace.
    void entryAfterEntry()
    {
        writeSettings(staticFile);
        BoxWatcher watcher;
        create();
        run([&] {
            toPage(IpPageId);
            const auto edit = [this](const char *text, const char *closingKey) {
                touch(find(QStringLiteral("FirstIPButton")));
                enter(QLatin1String(text));
                touch(key(QLatin1String(closingKey)));
                return shown("FirstIPLineEdit");
            };
            QCOMPARE(edit("10.0.0.1", "ok"), QStringLiteral("10.0.0.1"));
            QCOMPARE(edit("9.9.9.9", "cancel"), QStringLiteral("10.0.0.1"));
            QCOMPARE(edit("0.0.0.1", "ok"), QStringLiteral("10.0.0.1"));
            QCOMPARE(edit("", "ok"), QStringLiteral("..."));
            QCOMPARE(edit("", "ok"), QStringLiteral("..."));
            QCOMPARE(edit("192.168.0.10", "ok"), QStringLiteral("192.168.0.10"));
            toSummary();
            QCOMPARE(changes(), QStringList());
        });
        QCOMPARE(watcher.texts().size(), 1);
    }

    void display_data()
    {
        QTest::addColumn<QString>("lease"); // address, netmask and gateway; empty: none
        QTest::addColumn<QString>("servers");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("addresses");
        QTest::addColumn<QStringList>("dns"); // labels and values
        const QByteArray dhcp = QByteArray(staticFile).replace("static", "dhcp");
        const QByteArray none = QByteArray(dhcp).replace("eth0.ip=192.168.0.10", "eth0.ip=");
        const QStringList configured = {"192.168.0.10", "255.255.255.0", "192.168.0.1"};
        const QStringList leased = {"10.0.0.7", "255.0.0.0", "10.0.0.254"};
        const QStringList noLease = {"0.0.0.0", "0.0.0.0", "0.0.0.0"};
        const auto dns = [](int nFirst, const char *first, const char *second) {
            return QStringList({QStringLiteral("DNS %1: ").arg(nFirst), first,
                                QStringLiteral("DNS %1: ").arg(nFirst + 1), second});
        };
        QTest::newRow("static") << QStringLiteral("10.0.0.7") << "1.1.1.1 1.0.0.1" << staticFile
                                << configured << dns(1, "192.168.0.2", "0.0.0.0");
        QTest::newRow("no lease") << QString() << "" << dhcp << noLease
                                  << dns(1, "192.168.0.2", "0.0.0.0");
        QTest::newRow("two servers") << QStringLiteral("10.0.0.7") << "1.1.1.1 1.0.0.1" << dhcp
                                     << leased << dns(3, "192.168.0.2", "0.0.0.0");
        QTest::newRow("one server") << QStringLiteral("10.0.0.7") << "1.1.1.1" << dhcp << leased
                                    << dns(2, "192.168.0.2", "0.0.0.0");
        QTest::newRow("servers without address")
            << QStringLiteral("10.0.0.7") << "0.0.0.0 0.0.0.0" << dhcp << leased
            << dns(1, "192.168.0.2", "0.0.0.0");
        QTest::newRow("no stored address")
            << QStringLiteral("10.0.0.7") << "" << none << leased << dns(1, "0.0.0.0", "0.0.0.0");
    }
    void display()
    {
        QFETCH(QString, lease);
        QFETCH(QString, servers);
        QFETCH(QByteArray, file);
        if (!lease.isEmpty()) {
            root().setFirmware(QStringLiteral("eth0.ip"), lease);
            root().setFirmware(QStringLiteral("eth0.netmask"), QStringLiteral("255.0.0.0"));
            root().setFirmware(QStringLiteral("gateway"), QStringLiteral("10.0.0.254"));
        }
        root().setFirmware(QStringLiteral("dns1"), servers.section(u' ', 0, 0));
        root().setFirmware(QStringLiteral("dns2"), servers.section(u' ', 1, 1));
        writeSettings(file);
        create();
        run([&] {
            toPage(IpPageId);
            QTEST(QStringList({shown("FirstIPLineEdit"), shown("SecondIPLineEdit"),
                               shown("ThirdIPLineEdit")}),
                  "addresses");
            for (const FieldIndex index : {Address, Netmask, Gateway}) {
                QCOMPARE(find(Fields[index].button)->isEnabled(), file == staticFile);
            }
            toPage(DnsPageId);
            QTEST(QStringList({label("dns1_ip_Label"), shown("dns1_ip_Edit"),
                               label("dns2_ip_Label"), shown("dns2_ip_Edit")}),
                  "dns");
            QVERIFY(find(QStringLiteral("dns1_ip_Button"))->isEnabled());
        });
    }

    void renumbering()
    {
        root().setFirmware(QStringLiteral("dns1"), QStringLiteral("1.1.1.1"));
        writeSettings(QByteArray(staticFile).replace("static", "dhcp"));
        create();
        BoxWatcher watcher;
        run([&] {
            const auto caption = [this] {
                touch(find(QStringLiteral("dns1_ip_Button")));
                QString text =
                    openKeyboard()->findChild<QLabel *>(QStringLiteral("panelLabel"))->text();
                enter(QStringLiteral("300.300.1.1"));
                touch(key(QStringLiteral("ok")));
                return text;
            };
            toPage(DnsPageId);
            QCOMPARE(caption(), QStringLiteral("DNS 2: "));
            press(QWizard::BackButton);
            press(QWizard::BackButton);
            toggleMode();
            toPage(DnsPageId);
            QCOMPARE(label("dns2_ip_Label"), QStringLiteral("DNS 2: "));
            QCOMPARE(caption(), QStringLiteral("DNS 1: "));
            touch(find(QStringLiteral("dns1_ip_Button")));
            enter(QStringLiteral("8.8.8.8"));
            touch(key(QStringLiteral("ok")));
            toSummary();
            QCOMPARE(
                changes(),
                QStringList({"Network OP-Mode: DHCP -> Static", "DNS 1: 192.168.0.2 -> 8.8.8.8"}));
        });
        QCOMPARE(watcher.texts().size(), 2);
        QVERIFY(watcher.texts()[0].contains(QLatin1String("dns2")));
        QVERIFY(watcher.texts()[1].contains(QLatin1String("dns1")));
    }

    void password_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QStringList>("entries"); // "cancel" and "timeout" are no texts
        QTest::addColumn<bool>("unlocked");
        QTest::addColumn<int>("boxes");
        const QByteArray digits("1234");
        QTest::newRow("right") << digits << QStringList({"1234"}) << true << 0;
        QTest::newRow("second try") << digits << QStringList({"12345", "1234"}) << true << 1;
        QTest::newRow("third try") << digits << QStringList({"", "123", "1234"}) << true << 2;
        QTest::newRow("wrong") << digits << QStringList({"4321", "1", "12"}) << false << 3;
        QTest::newRow("cancelled") << digits << QStringList({"cancel"}) << false << 0;
        QTest::newRow("cancelled later") << digits << QStringList({"1", "cancel"}) << false << 1;
        QTest::newRow("timed out") << digits << QStringList({"timeout"}) << false << 0;
        QTest::newRow("longest") << QByteArray("01234567") << QStringList({"01234567"}) << true
                                 << 0;
        QTest::newRow("too long") << QByteArray("012345678")
                                  << QStringList({"012345678", "012345678", "012345678"}) << false
                                  << 3;
        QTest::newRow("letters") << QByteArray("12ab") << QStringList({"12", "12", "12"}) << false
                                 << 3;
    }
    void password()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QStringList, entries);
        QFETCH(bool, unlocked);
        QFETCH(int, boxes);
        writeSettings(QByteArray(Protection).replace("1234", stored) + staticFile);
        BoxWatcher watcher;
        create();
        run([&] {
            QCOMPARE(pWizard->currentId(), int(ProtectionPageId));
            for (const QString &entry : std::as_const(entries)) {
                QTRY_VERIFY(openKeyboard());
                QVERIFY(!anyWizardButtonVisible());
                QCOMPARE(openKeyboard()->findChild<QLabel *>(QStringLiteral("panelLabel"))->text(),
                         QStringLiteral("Password: "));
                QCOMPARE(openKeyboard()->lineEdit()->text(), QString());
                if (entry == QLatin1String("timeout")) {
                    for (int i = 0; i < 20; ++i) {
                        QVERIFY(openKeyboard());
                        QMetaObject::invokeMethod(openKeyboard(), "UpdateTimeout");
                    }
                } else if (entry == QLatin1String("cancel")) {
                    touch(key(entry));
                } else {
                    enter(entry);
                    const QString display = openKeyboard()->lineEdit()->displayText();
                    QVERIFY(std::none_of(display.cbegin(), display.cend(),
                                         [](QChar c) { return c.isDigit(); }));
                    touch(key(QStringLiteral("ok")));
                }
                QVERIFY(!openKeyboard());
            }
            QCOMPARE(pWizard->isVisible(), unlocked);
            if (unlocked) {
                QCOMPARE(pWizard->currentId(), int(NetModePageId));
                QVERIFY(pWizard->button(QWizard::NextButton)->isVisible());
                QVERIFY(pWizard->button(QWizard::CancelButton)->isVisible());
                press(QWizard::NextButton);
                press(QWizard::BackButton);
                QCOMPARE(pWizard->currentId(), int(NetModePageId));
                QVERIFY(!pWizard->button(QWizard::BackButton)->isEnabled());
            }
        });
        QTRY_VERIFY(pParent->isActiveWindow()); // keys go on working
        const QStringList notes = {". You have 2 tries left.", ". You have 1 try left.", "."};
        QStringList texts;
        for (const QString &note : notes.first(boxes)) {
            texts += wrongPassword(note);
        }
        QCOMPARE(watcher.texts(), texts);
    }

    // Not even a screenshot of the page behind the keyboard shows what was entered.
    void digitsAreInvisible()
    {
        writeSettings(Protection + staticFile);
        create();
        run([&] {
            QTRY_VERIFY(openKeyboard());
            auto *pEdit = find<QLineEdit>(QStringLiteral("ProtectionLineEdit"));
            const QImage empty = pEdit->grab().toImage();
            pEdit->setText(QStringLiteral("1234"));
            pEdit->selectAll();
            QCOMPARE(pEdit->grab().toImage(), empty);
        });
    }

    void wholeRoad_data()
    {
        QTest::addColumn<bool>("keys");
        QTest::newRow("touch") << false;
        QTest::newRow("keypad") << true;
    }
    void wholeRoad()
    {
        QFETCH(bool, keys);
        bKeys = keys;
        writeSettings(Protection + QByteArray(staticFile).replace("static", "dhcp"));
        root().writeCommand(QStringLiteral("/bin/syscfg"), "cp \"$2\" \"$PANEL_ROOT/applied\"");
        BoxWatcher watcher;
        create();
        const bool bSaved = run([&] {
            QTRY_VERIFY(openKeyboard());
            enterAndConfirm(QStringLiteral("999"));
            QTRY_VERIFY(openKeyboard());
            enterAndConfirm(QStringLiteral("1234"));
            QCOMPARE(pWizard->currentId(), int(NetModePageId));
            activate(find(QStringLiteral("NetOpModeSelectButton")));
            const char *texts[] = {"10.0.0.9", "255.0.0.0", "10.0.0.1", "10.0.0.2", "10.0.0.3"};
            for (int i = 0; i < Fields.size(); ++i) {
                while (pWizard->currentId() != Fields[i].page) {
                    activate(QWizard::NextButton);
                }
                for (const char *text : {"300.300.0.0", texts[i]}) {
                    activate(find(Fields[i].button));
                    QVERIFY(openKeyboard());
                    enterAndConfirm(QLatin1String(text));
                }
                QCOMPARE(find<QLineEdit>(Fields[i].edit)->text(), QLatin1String(texts[i]));
            }
            activate(QWizard::NextButton);
            QCOMPARE(changes(),
                     QStringList(
                         {"Network OP-Mode: DHCP -> Static", "Address: 192.168.0.10 -> 10.0.0.9",
                          "Gateway: 192.168.0.1 -> 10.0.0.1", "Netmask: 255.255.255.0 -> 255.0.0.0",
                          "DNS 1: 192.168.0.2 -> 10.0.0.2", "DNS 2: 0.0.0.0 -> 10.0.0.3"}));
            activate(QWizard::FinishButton);
        });
        QVERIFY(bSaved);
        QCOMPARE(watcher.texts().size(), 1 + Fields.size());
        QCOMPARE(root().read(QStringLiteral("/applied")),
                 QByteArray("[network]\ndefault_gateway=10.0.0.1\n"
                            "dnsserver1=10.0.0.2\ndnsserver2=10.0.0.3\n"
                            "eth0.ip=10.0.0.9\neth0.mode=static\neth0.netmask=255.0.0.0\n"));
    }
};

PANEL_TEST_MAIN(WizardPagesTest)
#include "tst_wizardpages.moc"
