#include "settings/errorcatalogue.h"

#include <QCoreApplication>
#include <QMessageBox>

// The texts are static data, so the table costs nothing at start-up, and they are translated when
// they are looked up: a table translated before main() would run before any translator exists.
const ErrorEntry errorCatalogue[] = {
    {WARN_INI_ENTRY_MISSING,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "entry %1 not found in ini-file. Using default value for entry.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_NO_MEMORY,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not allocate memory for data in %1. Configuration aborted.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_IP_DATA_INVALID,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "%1 ip-data is not valid. Please enter correct data.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_INI_ACCESS,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "can't access ini-file. Please check file permissions.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_INI_FORMAT,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "format problems in ini-file. Please check format and file contents.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_NO_MEMORY_PAGES,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "can't allocate memory for wizard pages. Configuration aborted.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_CREATE,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject", "couldn't create %1. Please check permissions.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_CAL_NO_BACKUP,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "no backupdata for calibration available. Try external ts_calibrate program.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_TS_OPEN,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "could not open input device for touchscreen. Try external ts_calibrate program.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_TS_CONFIG,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "Error in tslib function ts_config. Check the ts.conf file.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_TS_CLOSE,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not close input device for touchscreen. Please reboot and try again.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_NULL_POINTER,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "method %1 called with null pointer. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILE_OPEN,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not open file %1. Maybe file is missing or has wrong permissions.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILE_WRITE,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not write file %1. Maybe file is broken or has wrong permissions.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILE_READ,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "could not read file %1. Maybe file is missing, broken or has wrong permissions.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {WARN_CAL_BACKUP_LOADED,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject", "calibration backup data already loaded.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_CAL_CORRUPT,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "Corrupt calibration data detected. Data will be cleared.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_CAL_TIMEOUT,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Automatic calibration timed out, touchscreen disabled. Calibration will be restarted on "
         "next startup. Please end calibration within 15 seconds.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_BUFFER_SIZE,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "file data exceeds buffersize. Please check if datafile is corrupt.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_TS_READ,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not read touchscreen raw data. Try external ts_calibrate program.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_PORT_INVALID,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "%1 port is not valid. Please enter correct data.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILENAME_POINTER,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "empty filename or filename pointer detected. Severe error, "
                                      "please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILENAME_EMPTY,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "empty filename detected. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_OBJECT_NOT_FOUND,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Object %1 not found. This may be a feature which is not supported by your model.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_GPIO_ILLEGAL,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "An illegal GPIO should bet set. Please contact support and report.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_GPIO_VALUE,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "A GPIO should be set to an unsupported value. Please contact support and report.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_NO_FIRST_PAGE,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "First wizardpage not set. Configuration aborted.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_PASSWORD,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "Password incorrect. Please enter correct password to enter configuration.%1")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_NO_XML_DATA,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "No xml-data found in system configuration. Browser may not work correct!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_NO_XML_MEMORY,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "No memory for xml data pointer available. Can not start browser!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_NO_BROWSER_PATH,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "No path to browser set. Can not start browser!!!")),
     QMessageBox::Critical, QMessageBox::Ok | QMessageBox::Abort},
    {ERR_BROWSER_NOT_STARTED,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject", "Not starting browser due to errors!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_BROWSER_NOT_FOUND,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Browser not executable or browser and/or browserconfig not found. Please check path in "
         "sysconfig and file permissions for browser. Then reboot and try again.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_URL_INVALID,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "URL is not valid. Please check the URL you entered !!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_NO_MAC,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Could not detect MAC-Address. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_SYSCONFIG_TAG,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Missing tag %1 in sysconfig. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_LIBINI_CONVERSION,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "Conversion error in libini. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_SYSCFG_RESULT,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Starting syscfg process ended with resultcode %1. Severe "
                                      "error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {WARN_VNC_LOST,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject", "Connection to vnc-server lost!!!")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_FILE_NOT_WRITABLE,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "File %1 is not writeable. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_FILE_ERASE,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject",
                           "Could not erase file %1. New configuration may be corrupted. Severe "
                           "error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_SEVERE,
     QStringLiteral(
         QT_TRANSLATE_NOOP("QObject", "%1. Severe error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_REMOUNT_CAL,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Could not remount %1 to write calibration data. Severe "
                                      "error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_REMOUNT_PROTECT,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Could not remount %1 to protect files. Severe error, please "
                                      "contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_DHCP_IP,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Could not read DHCP IP-Address from interface. Severe "
                                      "error, please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_DHCP_NETMASK,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Could not read DHCP Netmask from interface. Severe error, "
                                      "please contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {WARN_BRIGHTNESS,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject", "Could not set brightness to selected value.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {WARN_DEFAULTS_SET,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "Default values set (become active after next reboot). You "
                                      "should run a configuration cycle as soon as possible.")),
     QMessageBox::Warning, QMessageBox::Ok},
    {ERR_FILE_READ_ABORT,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject",
         "could not read file %1. Maybe file is missing, broken or has wrong permissions.")),
     QMessageBox::Critical, QMessageBox::Ok | QMessageBox::Abort},
    {ERR_FILE_OPEN_ABORT,
     QStringLiteral(QT_TRANSLATE_NOOP(
         "QObject", "could not open file %1. Maybe file is missing or has wrong permissions.")),
     QMessageBox::Critical, QMessageBox::Ok | QMessageBox::Abort},
    {ERR_EMPTY_DIRLIST,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "empty directorylist detected. Severe internal error, please "
                                      "contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_EMPTY_SEARCH,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "empty search entry detected. Severe internal error, please "
                                      "contact support and report!!!")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_GENERAL, QStringLiteral(QT_TRANSLATE_NOOP("QObject", "%1 ")), QMessageBox::Critical,
     QMessageBox::Ok},
    {ERR_TS_READ_PRESS,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "could not read touchscreen while waiting for the touch. "
                                      "Calibration is as before. Please check touchscreen and try "
                                      "again.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_TS_READ_RELEASE,
     QStringLiteral(QT_TRANSLATE_NOOP("QObject",
                                      "could not read touchscreen during the touch. Calibration "
                                      "is as before. Please check touchscreen and try again.")),
     QMessageBox::Critical, QMessageBox::Ok},
    {ERR_END, QString(), QMessageBox::NoIcon, QMessageBox::NoButton},
};

const ErrorEntry *findError(qint16 code)
{
    for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
        if (pEntry->nCode == code) {
            return pEntry;
        }
    }
    return nullptr;
}

QString errorText(const ErrorEntry &entry)
{
    return QCoreApplication::translate("QObject", entry.text.toUtf8().constData());
}
