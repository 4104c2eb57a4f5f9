#pragma once

#include "tests/support/deviceroot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

/// Settings of a panel with an address of its own; nothing protects the configuration.
inline const QByteArray StaticSettings =
    "[network]\neth0.mode=static\neth0.ip=192.168.0.10\neth0.netmask=255.255.255.0\n"
    "default_gateway=192.168.0.1\ndnsserver1=192.168.0.2\ndnsserver2=0.0.0.0\n";

/// The same, with an address from a DHCP server.
inline const QByteArray DhcpSettings = QByteArray(StaticSettings).replace("static", "dhcp");

/// Base of every test class: each test function gets a fresh device root and a screen of 800x480,
/// and fails on a warning that it did not announce with QTest::ignoreMessage().
class DeviceTest : public QObject
{
    Q_OBJECT

protected:
    DeviceRoot &root() const { return *pRoot; }
    void writeSettings(const QByteArray &file) const { root().write("/etc/settings.ini", file); }

    /// What a test function opened, closed after it while the device root is there.
    virtual void closeWindows() { }

    /// The columns of a data function: columns<QSize, int>("screen", "index").
    template <typename... Types>
    static void columns(std::same_as<const char *> auto... names)
    {
        (QTest::addColumn<Types>(names), ...);
    }
    /// One row of a data function, with a value for each column.
    template <typename... Values>
    static void row(const char *name, const Values &...values)
    {
        (QTest::newRow(name) << ... << values);
    }

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    std::unique_ptr<DeviceRoot> pRoot;
};
