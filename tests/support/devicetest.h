#pragma once

// What most tests need: include this alone.
#include "tests/support/boxwatcher.h"
#include "tests/support/deviceroot.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QVariant>
#include <QWindow>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

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

    /// One such warning is announced.
    static void expectWarning(const QString &pattern)
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(pattern));
    }

    /// One row of a data function: the values that FETCH() gives to the test, in its order.
    template <typename... Values>
    static void row(const QByteArray &name, const Values &...values)
    {
        addRow(name, {variantOf(values)...});
    }
    /// Two rows, of false and of true.
    static void eitherWay(const QByteArray &off, const QByteArray &on)
    {
        row(off, false);
        row(on, true);
    }
    /// Value number \a nIndex of the row that is tested. A text in quotes may be fetched as QString
    /// and as QByteArray.
    template <typename Type>
    static Type fetched(qsizetype nIndex)
    {
        const QVariant value = fetchedValue(nIndex);
        need(value.canConvert<Type>(), QStringLiteral("another type of value %1").arg(nIndex));
        return value.value<Type>();
    }

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    template <typename Value>
    static QVariant variantOf(const Value &value)
    {
        if constexpr (std::is_convertible_v<Value, const char *>) {
            return QByteArray(value);
        } else {
            return QVariant::fromValue(value);
        }
    }
    static void addRow(const QByteArray &name, const QVariantList &values);
    static QVariant fetchedValue(qsizetype nIndex);

    std::unique_ptr<DeviceRoot> pRoot;
};

/// The values of the tested row as variables: FETCH(QString, text, bool, valid).
// NOLINTBEGIN(bugprone-macro-parentheses): names and types
#define FETCH(...) PANEL_FETCH_0(__VA_ARGS__)
#define PANEL_FETCH_0(T, name, ...) \
    auto name = fetched<T>(0);      \
    __VA_OPT__(PANEL_FETCH_1(__VA_ARGS__))
#define PANEL_FETCH_1(T, name, ...) \
    auto name = fetched<T>(1);      \
    __VA_OPT__(PANEL_FETCH_2(__VA_ARGS__))
#define PANEL_FETCH_2(T, name, ...) \
    auto name = fetched<T>(2);      \
    __VA_OPT__(PANEL_FETCH_3(__VA_ARGS__))
#define PANEL_FETCH_3(T, name, ...) \
    auto name = fetched<T>(3);      \
    __VA_OPT__(PANEL_FETCH_4(__VA_ARGS__))
#define PANEL_FETCH_4(T, name, ...) \
    auto name = fetched<T>(4);      \
    __VA_OPT__(PANEL_FETCH_5(__VA_ARGS__))
#define PANEL_FETCH_5(T, name, ...) \
    auto name = fetched<T>(5);      \
    __VA_OPT__(PANEL_FETCH_6(__VA_ARGS__))
#define PANEL_FETCH_6(T, name) auto name = fetched<T>(6);
// NOLINTEND(bugprone-macro-parentheses)
