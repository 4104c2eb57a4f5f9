#include "tests/support/devicetest.h"
#include "wizard/ip4validator.h"

class TestIP4Validator : public DeviceTest
{
    Q_OBJECT

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
};

PANEL_TEST_MAIN(TestIP4Validator)
#include "tst_ip4validator.moc"
