#include "tests/support/devicetest.h"

#include "tests/support/screen.h"

#include <QRegularExpression>

void DeviceTest::init()
{
    pRoot = std::make_unique<DeviceRoot>();
    setScreen({800, 480});
    // What the offscreen platform, a keyboard that is a FIFO and Qt's multi-touch driver, when it
    // has read all there is, say about themselves is no fault.
    QTest::failOnWarning(
        QRegularExpression("^(?!This plugin does not support|evdevkeyboard: Failed to query led"
                           "|evdevtouch: Got EOF)"));
}

void DeviceTest::cleanup()
{
    closeWindows();
    pRoot.reset();
}

void DeviceTest::addRow(const QByteArray &name, const QVariantList &values)
{
    static QByteArray function; // that has its column
    if (function != QTest::currentTestFunction()) {
        function = QTest::currentTestFunction();
        QTest::addColumn<QVariantList>("values");
    }
    QTest::newRow(name.constData()) << values;
}

QVariant DeviceTest::fetchedValue(qsizetype nIndex)
{
    QFETCH(QVariantList, values);
    need(nIndex < values.size(), "a value in the row");
    return values[nIndex];
}
