#include "tests/support/devicetest.h"

#include <QRegularExpression>
#include <QtTest>

void DeviceTest::init()
{
    pRoot = std::make_unique<DeviceRoot>();
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
}

void DeviceTest::cleanup()
{
    pRoot.reset();
}
