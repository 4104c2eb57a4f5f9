#include "app/language.h"
#include "tests/wizard/wizardtest.h"
#include "wizard/ip4validator.h"

#include <QTranslator>

namespace {

struct Field
{
    WizardPageIndex page;
    QString button;
    QString edit;
    QString label; // in the summary
    QString name; // in messages
    QString stored; // in StaticSettings
};

// In the order of the pages.
enum FieldIndex { Address, Netmask, Gateway, Dns1, Dns2 };
const QList<Field> Fields = {
    {IpPageId, "FirstIPButton", "FirstIPLineEdit", "Address", "address", "192.168.0.10"},
    {IpPageId, "SecondIPButton", "SecondIPLineEdit", "Netmask", "netmask", "255.255.255.0"},
    {IpPageId, "ThirdIPButton", "ThirdIPLineEdit", "Gateway", "gateway", "192.168.0.1"},
    {DnsPageId, "dns1_ip_Button", "dns1_ip_Edit", "DNS 1", "dns1", "192.168.0.2"},
    {DnsPageId, "dns2_ip_Button", "dns2_ip_Edit", "DNS 2", "dns2", "0.0.0.0"},
};

const QByteArray Protection = "[options]\nconfig_passwd=1234\nconfig_protection_enabled=1\n";

} // namespace

class WizardPagesTest : public WizardTest
{
    Q_OBJECT

private:
    void closeWindows() override
    {
        WizardTest::closeWindows();
        qDeleteAll(qApp->findChildren<QTranslator *>(Qt::FindDirectChildrenOnly));
    }
    // What the operator sees; the digits of a field stand at the front of their parts.
    QString shown(const char *edit) const
    {
        const auto *pEdit = find<QLineEdit>(edit);
        QLineEdit fresh;
        fresh.setInputMask(pEdit->inputMask());
        fresh.setText(pEdit->text());
        return pEdit->displayText() == fresh.displayText() ? pEdit->text() : pEdit->displayText();
    }
    static QString keyboardCaption()
    {
        return openKeyboard()->findChild<QLabel *>("panelLabel")->text();
    }
    QString label(const char *name) const { return find<QLabel>(name)->text(); }

    // The operator's hand on the screen or, with bKeys, on a keypad without a touchscreen.
    bool bKeys = false;

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

    /// Opens the keyboard by \a button, enters \a text and presses \a closingKey.
    void edit(const QString &button, const QString &text, const QString &closingKey = "ok")
    {
        touch(find(button));
        enter(text);
        touch(key(closingKey));
    }
    void enterAndConfirm(const QString &text)
    {
        enter(text, bKeys);
        activate(key("ok"));
    }

private Q_SLOTS:
    void judges_data()
    {
        // By the text, for each use: an address, one with a first part of 0 allowed, a netmask.
        constexpr auto No = QValidator::Invalid;
        constexpr auto Fix = QValidator::Intermediate;
        constexpr auto Yes = QValidator::Acceptable;
        row("", Yes, Yes, Yes);
        row("192.168.1.10", Yes, Yes, No);
        row("255.255.255.255", Yes, Yes, Yes);
        row("255.255.254.0", Yes, Yes, Yes);
        row("128.0.0.0", Yes, Yes, Yes);
        row("255.255.255.1", Yes, Yes, No);
        row("255.0.255.0", Yes, Yes, No);
        row("0.255.255.255", No, Yes, No);
        row("0.0.0.0", No, Yes, No);
        row("0.1.2.3", No, Yes, No);
        row("1.2.3", Fix, Fix, Fix);
        row("1.2.3.", Fix, Fix, Fix);
        row(".2.3.4", Fix, Fix, Fix);
        row("...", Fix, Fix, Fix);
        row("1.2.3.4.5", No, No, No);
        row("1.2.3.4.", No, No, No);
        row("300.1.1.1", Fix, Fix, Fix);
        row("300.300.1.1", No, No, No);
        row("1.1.1.99999999999", No, No, No);
        row("010.1.1.1", Fix, Fix, Fix);
        row("000.1.1.1", No, Fix, No);
        row(" 10.1.1 .1", Fix, Fix, Fix);
        row("+1.1.1.1", Fix, Fix, Fix);
        row("1.1.1. ", No, No, No);
        row("a.1.1.1", No, No, No);
        row("1.-2.1.1", No, No, No);
        row("1.0x2.1.1", No, No, No);
        row("255.0.255.00", Fix, Fix, Fix); // repaired before it is judged as a netmask
    }
    void judges()
    {
        FETCH(QValidator::State, address, QValidator::State, addressOrNone, QValidator::State,
              netmask);
        QString text = QTest::currentDataTag();
        const QString before = text;
        IP4Validator validator;
        const auto judge = [&](int mode) {
            int argument = mode;
            const auto state = validator.validate(text, argument);
            return text == before && argument == mode ? int(state) : -1;
        };
        QCOMPARE(judge(0), int(address));
        QCOMPARE(judge(1), int(netmask));
        QCOMPARE(judge(-7), int(netmask));
        validator.setZeroFirstOctetAllowed(true);
        QCOMPARE(judge(0), int(addressOrNone));
        validator.setZeroFirstOctetAllowed(false);
        QCOMPARE(judge(0), int(address));
    }

    void repairs_data()
    {
        // from the text
        row("192.168.001.010", "192.168.1.10");
        row("10.0.0.300", "10.0.0.255");
        row("10..0.1", "10.0.0.1");
        row("1.2.3", "1.2.3.0");
        row("7", "7.0.0.0");
        row("...", "0.0.0.0");
        row(" 1. 2 .+3.4 ", "1.2.3.4");
        row("1.-2.x.4.5", "1.0.0.4");
    }
    void repairs()
    {
        FETCH(QString, repaired);
        QString text = QTest::currentDataTag();
        IP4Validator validator;
        validator.fixup(text);
        QCOMPARE(text, repaired);
    }

    void entry_data()
    {
        // What the field holds afterwards; nothing when the entry is refused.
        const auto add = [](FieldIndex index, const char *entered, const char *after) {
            row(Fields[index].name.toLatin1() + ' ' + entered, index, entered, after);
        };
        add(Address, "10.1.2.3", "10.1.2.3");
        add(Address, "192.168.0.300", "192.168.0.255");
        add(Address, "", "...");
        add(Address, "192.168.0.10", "192.168.0.10");
        add(Address, "0.0.0.0", "");
        add(Netmask, "255.255", "255.255.0.0");
        add(Netmask, "255.255.0.255", "");
        add(Gateway, "0.0.0.0", "0.0.0.0");
        add(Gateway, "256.256.1.1", "");
        add(Dns1, "0.0.0.0", "0.0.0.0");
        add(Dns1, "", "...");
        add(Dns2, "8.8.8.8", "8.8.8.8");
        add(Dns2, "300.300.1.1", "");
    }
    void entry()
    {
        FETCH(FieldIndex, index, QString, entered, QString, after);
        const Field &field = Fields[index];
        BoxWatcher watcher;
        run([&] {
            toPage(field.page);
            edit(field.button, entered);
            QVERIFY(!openKeyboard());
            QCOMPARE(find<QLineEdit>(field.edit)->text(), after.isEmpty() ? field.stored : after);
            toSummary();
            QStringList expected;
            if (!after.isEmpty() && after != field.stored) {
                expected += QStringLiteral("%1: %2 -> %3")
                                .arg(field.label, field.stored, after == "..." ? "" : after);
            }
            QCOMPARE(changes(), expected);
        });
        const QString text = "Error -201: %1 ip-data is not valid. Please enter correct data.";
        QCOMPARE(watcher.texts(),
                 after.isEmpty() ? QStringList(text.arg(field.name)) : QStringList());
    }

    // A second entry starts from what the first one left; a cancelled one leaves no trace.
    void entryAfterEntry()
    {
        BoxWatcher watcher;
        run([&] {
            toPage(IpPageId);
            const auto result = [this](const char *text, const char *closingKey) {
                edit("FirstIPButton", text, closingKey);
                return shown("FirstIPLineEdit");
            };
            QCOMPARE(result("10.0.0.1", "ok"), "10.0.0.1");
            QCOMPARE(result("9.9.9.9", "cancel"), "10.0.0.1");
            QCOMPARE(result("0.0.0.1", "ok"), "10.0.0.1");
            QCOMPARE(result("", "ok"), "...");
            QCOMPARE(result("", "ok"), "...");
            QCOMPARE(result("192.168.0.10", "ok"), "192.168.0.10");
            toSummary();
            QCOMPARE(changes(), QStringList());
        });
        QCOMPARE(watcher.texts().size(), 1);
    }

    void display_data()
    {
        // The name servers' first number, and what stands in the first field of them.
        const QByteArray none =
            QByteArray(DhcpSettings).replace("eth0.ip=192.168.0.10", "eth0.ip=");
        const QStringList configured = {"192.168.0.10", "255.255.255.0", "192.168.0.1"};
        const QStringList leased = {"10.0.0.7", "255.0.0.0", "10.0.0.254"};
        const QStringList noLease = {"0.0.0.0", "0.0.0.0", "0.0.0.0"};
        const QString lease = "eth0.ip=10.0.0.7 eth0.netmask=255.0.0.0 gateway=10.0.0.254 ";
        const QString dns1 = "192.168.0.2";
        row("static", lease + "dns1=1.1.1.1 dns2=1.0.0.1", StaticSettings, configured, 1, dns1);
        row("no lease", "", DhcpSettings, noLease, 1, dns1);
        row("two servers", lease + "dns1=1.1.1.1 dns2=1.0.0.1", DhcpSettings, leased, 3, dns1);
        row("one server", lease + "dns1=1.1.1.1", DhcpSettings, leased, 2, dns1);
        row("no address", lease + "dns1=0.0.0.0 dns2=0.0.0.0", DhcpSettings, leased, 1, dns1);
        row("no stored address", lease, none, leased, 1, "0.0.0.0");
    }
    void display()
    {
        FETCH(QString, firmware, QByteArray, file, QStringList, addresses, int, number, QString,
              server);
        root().setFirmware(firmware);
        create(file);
        run([&] {
            toPage(IpPageId);
            QCOMPARE(QStringList({shown("FirstIPLineEdit"), shown("SecondIPLineEdit"),
                                  shown("ThirdIPLineEdit")}),
                     addresses);
            for (const FieldIndex index : {Address, Netmask, Gateway}) {
                QCOMPARE(find(Fields[index].button)->isEnabled(), file == StaticSettings);
            }
            toPage(DnsPageId);
            QCOMPARE(shown("dns1_ip_Edit"), server);
            QCOMPARE(shown("dns2_ip_Edit"), "0.0.0.0");
            QCOMPARE(label("dns1_ip_Label"), QStringLiteral("DNS %1: ").arg(number));
            QCOMPARE(label("dns2_ip_Label"), QStringLiteral("DNS %1: ").arg(number + 1));
            QVERIFY(find("dns1_ip_Button")->isEnabled());
        });
    }

    void renumbering()
    {
        root().setFirmware("dns1=1.1.1.1");
        create(DhcpSettings);
        BoxWatcher watcher;
        run([&] {
            const auto caption = [this] {
                touch(find("dns1_ip_Button"));
                QString text = keyboardCaption();
                enter("300.300.1.1");
                touch(key("ok"));
                return text;
            };
            toPage(DnsPageId);
            QCOMPARE(caption(), "DNS 2: ");
            press(QWizard::BackButton);
            press(QWizard::BackButton);
            toggleMode();
            toPage(DnsPageId);
            QCOMPARE(label("dns2_ip_Label"), "DNS 2: ");
            QCOMPARE(caption(), "DNS 1: ");
            edit("dns1_ip_Button", "8.8.8.8");
            toSummary();
            QCOMPARE(
                changes(),
                QStringList({"Network OP-Mode: DHCP -> Static", "DNS 1: 192.168.0.2 -> 8.8.8.8"}));
        });
        QCOMPARE(watcher.texts().size(), 2);
        QVERIFY(watcher.texts()[0].contains("dns2") && watcher.texts()[1].contains("dns1"));
    }

    void password_data()
    {
        // Of the entries "cancel" and "timeout" are no texts.
        const QString digits("1234");
        row("right", digits, "1234", true, 0);
        row("second try", digits, "12345,1234", true, 1);
        row("third try", digits, ",123,1234", true, 2);
        row("wrong", digits, "4321,1,12", false, 3);
        row("cancelled", digits, "cancel", false, 0);
        row("cancelled later", digits, "1,cancel", false, 1);
        row("timed out", digits, "timeout", false, 0);
        row("longest", "01234567", "01234567", true, 0);
        row("too long", "012345678", "012345678,012345678,012345678", false, 3);
        row("letters", "12ab", "12,12,12", false, 3);
    }
    void password()
    {
        FETCH(QString, stored, QString, entries, bool, unlocked, int, boxes);
        BoxWatcher watcher;
        create(QByteArray(Protection).replace("1234", stored.toLatin1()) + StaticSettings);
        run([&] {
            QCOMPARE(pWizard->currentId(), int(ProtectionPageId));
            for (const QString &entry : entries.split(u',')) {
                QTRY_VERIFY(openKeyboard());
                QVERIFY(!buttonsVisible().contains(true));
                QCOMPARE(keyboardCaption(), "Password: ");
                QCOMPARE(openKeyboard()->lineEdit()->text(), QString());
                if (entry == "timeout") {
                    for (int i = 0; i < 20; ++i) {
                        QVERIFY(openKeyboard());
                        QMetaObject::invokeMethod(openKeyboard(), "UpdateTimeout");
                    }
                } else if (entry == "cancel") {
                    touch(key(entry));
                } else {
                    enter(entry);
                    const QString display = openKeyboard()->lineEdit()->displayText();
                    QVERIFY(std::none_of(display.cbegin(), display.cend(),
                                         [](QChar c) { return c.isDigit(); }));
                    touch(key("ok"));
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
        const QString wrong =
            "Error -226: Password incorrect. Please enter correct password to enter "
            "configuration";
        const QStringList texts = {wrong + ". You have 2 tries left.",
                                   wrong + ". You have 1 try left.", wrong + "."};
        QCOMPARE(watcher.texts(), texts.first(boxes));
    }

    // The moments in which the page waits for its keyboard: no key has the keyboard or a box to go
    // to then, and none may work the page itself.
    void keysPassNoPassword_data()
    {
        row("opening", 0);
        row("after the first box", 1);
        row("after the second box", 2);
    }
    void keysPassNoPassword()
    {
        FETCH(int, wrongTries);
        create(Protection + StaticSettings);
        const auto attack = [&] {
            QVERIFY(!openKeyboard());
            QLineEdit probe(pWizard.get());
            probe.show();
            probe.setFocus();
            QSignalSpy returns(&probe, &QLineEdit::returnPressed);
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_T, Qt::Key_Tab,
                                      Qt::Key_Space, Qt::Key_Return, Qt::Key_Escape}) {
                queueKey(key);
                deliverKeys();
            }
            QVERIFY(returns.isEmpty() && probe.hasFocus());
            pWizard->next();
            pWizard->accept();
            for (const auto which : {QWizard::NextButton, QWizard::FinishButton}) {
                QVERIFY(!pWizard->button(which)->isEnabled());
                pWizard->button(which)->click();
            }
            QVERIFY(pWizard->isVisible());
            QCOMPARE(pWizard->currentId(), int(ProtectionPageId));
        };
        run([&] {
            for (int i = 0; i < wrongTries; ++i) {
                QTRY_VERIFY(openKeyboard());
                enter("99");
                QTimer::singleShot(1, this, [] {
                    QTRY_VERIFY(QGuiApplication::focusWindow());
                    // The box is gone with the first one.
                    for (int n = 0; n < 4; ++n) {
                        queueKey(Qt::Key_Return);
                    }
                });
                touch(key("ok"));
            }
            attack();
            QTRY_VERIFY(openKeyboard());
            QCOMPARE(openKeyboard()->lineEdit()->text(), QString());
            enterAndConfirm("1234");
            QCOMPARE(pWizard->currentId(), int(NetModePageId));
            QTRY_VERIFY(pParent->isActiveWindow());
            queueKey(Qt::Key_Return); // has a button to go to again
            QTRY_COMPARE(pWizard->currentId(), int(IpPageId));
        });
    }

    // Not even a screenshot of the page behind the keyboard shows what was entered.
    void digitsAreInvisible()
    {
        create(Protection + StaticSettings);
        run([&] {
            QTRY_VERIFY(openKeyboard());
            auto *pEdit = find<QLineEdit>("ProtectionLineEdit");
            const QImage empty = pEdit->grab().toImage();
            pEdit->setText("1234");
            pEdit->selectAll();
            QCOMPARE(pEdit->grab().toImage(), empty);
        });
    }

    void wholeRoad_data()
    {
        row("touch", QSize(240, 320), false, false);
        row("keypad", QSize(800, 480), true, false);
        row("German", QSize(480, 272), false, true); // hands over what English does, to the byte
    }
    void wholeRoad()
    {
        FETCH(QSize, screen, bool, keys, bool, german);
        setScreen(screen);
        bKeys = keys;
        if (german) {
            qputenv("LC_ALL", "de"); // the first time that this process asks
            installLanguage();
        }
        root().writeCommand("/bin/syscfg", "cp \"$2\" \"$PANEL_ROOT/applied\"");
        BoxWatcher watcher;
        create(Protection + DhcpSettings);
        const bool bSaved = run([&] {
            QTRY_VERIFY(openKeyboard());
            enterAndConfirm("999");
            QTRY_VERIFY(openKeyboard());
            enterAndConfirm("1234");
            QCOMPARE(pWizard->currentId(), int(NetModePageId));
            activate(find("NetOpModeSelectButton"));
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
            while (pWizard->currentId() != SummaryPageId) {
                activate(QWizard::NextButton);
            }
            const QStringList english{
                "Network OP-Mode: DHCP -> Static",  "Address: 192.168.0.10 -> 10.0.0.9",
                "Gateway: 192.168.0.1 -> 10.0.0.1", "Netmask: 255.255.255.0 -> 255.0.0.0",
                "DNS 1: 192.168.0.2 -> 10.0.0.2",   "DNS 2: 0.0.0.0 -> 10.0.0.3"};
            QCOMPARE(german ? english : changes(), english);
            activate(QWizard::FinishButton);
        });
        QVERIFY(bSaved);
        QCOMPARE(watcher.texts().size(), 1 + Fields.size());
        QCOMPARE(root().read("/applied"),
                 QByteArray("[network]\ndefault_gateway=10.0.0.1\n"
                            "dnsserver1=10.0.0.2\ndnsserver2=10.0.0.3\n"
                            "eth0.ip=10.0.0.9\neth0.mode=static\neth0.netmask=255.0.0.0\n"));
    }
};

PANEL_TEST_MAIN(WizardPagesTest)
#include "tst_wizardpages.moc"
