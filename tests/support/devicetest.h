#pragma once

#include "tests/support/deviceroot.h"

#include <QObject>

#include <memory>

/// Base of every test class: each test function gets a fresh device root and fails on a warning
/// that it did not announce with QTest::ignoreMessage().
class DeviceTest : public QObject
{
    Q_OBJECT

protected:
    DeviceRoot &root() const { return *pRoot; }

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    std::unique_ptr<DeviceRoot> pRoot;
};
