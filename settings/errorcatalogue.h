#pragma once

#include <QString>

/// Everything that the operator is told about has one of these codes. Functions return the code as
/// their failure; 0 is success. -100 to -199 are warnings, -200 and below are errors.
constexpr qint16 WARN_INI_ENTRY_MISSING = -100;
constexpr qint16 ERR_NO_MEMORY = -200;
constexpr qint16 ERR_IP_DATA_INVALID = -201;
constexpr qint16 ERR_INI_ACCESS = -202;
constexpr qint16 ERR_INI_FORMAT = -203;
constexpr qint16 ERR_NO_MEMORY_PAGES = -204;
constexpr qint16 ERR_CREATE = -205;
constexpr qint16 ERR_CAL_NO_BACKUP = -206;
constexpr qint16 ERR_TS_OPEN = -207;
constexpr qint16 ERR_TS_CONFIG = -208;
constexpr qint16 ERR_TS_CLOSE = -209;
constexpr qint16 ERR_NULL_POINTER = -210;
constexpr qint16 ERR_FILE_OPEN = -211;
constexpr qint16 ERR_FILE_WRITE = -212;
constexpr qint16 ERR_FILE_READ = -213;
constexpr qint16 WARN_CAL_BACKUP_LOADED = -101;
constexpr qint16 ERR_CAL_CORRUPT = -235;
constexpr qint16 ERR_CAL_TIMEOUT = -236;
constexpr qint16 ERR_BUFFER_SIZE = -214;
constexpr qint16 ERR_TS_READ = -215;
constexpr qint16 ERR_PORT_INVALID = -219;
constexpr qint16 ERR_FILENAME_POINTER = -220;
constexpr qint16 ERR_FILENAME_EMPTY = -221;
constexpr qint16 ERR_OBJECT_NOT_FOUND = -222;
constexpr qint16 ERR_GPIO_ILLEGAL = -223;
constexpr qint16 ERR_GPIO_VALUE = -224;
constexpr qint16 ERR_NO_FIRST_PAGE = -225;
constexpr qint16 ERR_PASSWORD = -226;
constexpr qint16 ERR_NO_XML_DATA = -300;
constexpr qint16 ERR_NO_XML_MEMORY = -301;
constexpr qint16 ERR_NO_BROWSER_PATH = -302;
constexpr qint16 ERR_BROWSER_NOT_STARTED = -303;
constexpr qint16 ERR_BROWSER_NOT_FOUND = -304;
constexpr qint16 ERR_URL_INVALID = -305;
constexpr qint16 ERR_NO_MAC = -306;
constexpr qint16 ERR_SYSCONFIG_TAG = -308;
constexpr qint16 ERR_LIBINI_CONVERSION = -227;
constexpr qint16 ERR_SYSCFG_RESULT = -228;
constexpr qint16 WARN_VNC_LOST = -102;
constexpr qint16 ERR_FILE_NOT_WRITABLE = -229;
constexpr qint16 ERR_FILE_ERASE = -230;
constexpr qint16 ERR_SEVERE = -232;
constexpr qint16 ERR_REMOUNT_CAL = -233;
constexpr qint16 ERR_REMOUNT_PROTECT = -234;
constexpr qint16 ERR_DHCP_IP = -237;
constexpr qint16 ERR_DHCP_NETMASK = -238;
constexpr qint16 WARN_BRIGHTNESS = -104;
constexpr qint16 WARN_DEFAULTS_SET = -103;
constexpr qint16 ERR_FILE_READ_ABORT = -240;
constexpr qint16 ERR_FILE_OPEN_ABORT = -239;
constexpr qint16 ERR_EMPTY_DIRLIST = -241;
constexpr qint16 ERR_EMPTY_SEARCH = -242;
constexpr qint16 ERR_GENERAL = -999;
constexpr qint16 ERR_TS_READ_PRESS = -217;
constexpr qint16 ERR_TS_READ_RELEASE = -218;
/// Closes the catalogue; never a result.
constexpr qint16 ERR_END = -9999;

/// One message of the catalogue.
struct ErrorEntry
{
    qint16 nCode;
    QString text; ///< English, as translators know it; may hold one "%1". Show errorText().
    qint32 nIcon; ///< a QMessageBox::Icon
    qint32 nButtons; ///< QMessageBox::StandardButtons
};

/// All messages in a fixed order, closed by the row ERR_END. Immutable; for the GUI thread.
extern const ErrorEntry errorCatalogue[];

/// The row of \a code, nullptr when there is none (ERR_END included).
const ErrorEntry *findError(qint16 code);

/// The message of \a entry in the language that is installed now.
QString errorText(const ErrorEntry &entry);
