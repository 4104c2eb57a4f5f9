#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"

class TestErrorCatalogue : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void rowsAreConsistent()
    {
        const QSet<qint16> withAbort{ERR_NO_BROWSER_PATH, ERR_FILE_READ_ABORT, ERR_FILE_OPEN_ABORT};
        const QSet<qint16> errorsWithWarningIcon{ERR_GPIO_ILLEGAL, ERR_GPIO_VALUE, ERR_PASSWORD,
                                                 ERR_CAL_CORRUPT};
        QSet<qint16> seen;
        for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
            const qint16 code = pEntry->nCode;
            const QByteArray name = QByteArray::number(code);
            const bool bWarning = code <= -100 && code >= -199;
            QVERIFY2(!seen.contains(code), name);
            seen.insert(code);
            QVERIFY2(bWarning || (code <= -200 && code >= -999), name);
            QVERIFY2(!pEntry->text.isEmpty() && pEntry->text.count(QLatin1Char('%')) <= 1, name);
            const bool bWarningIcon = bWarning || errorsWithWarningIcon.contains(code);
            QCOMPARE(pEntry->nIcon, bWarningIcon ? QMessageBox::Warning : QMessageBox::Critical);
            const auto abort =
                withAbort.contains(code) ? QMessageBox::Abort : QMessageBox::NoButton;
            QCOMPARE(pEntry->nButtons, QMessageBox::Ok | abort);
        }
    }

    void findsOnlyMessages()
    {
        for (const int code : {0, 1, 5, 32767, -216, -9999, -32768}) {
            QVERIFY2(!findError(static_cast<qint16>(code)), QByteArray::number(code));
        }
        QCOMPARE(findError(ERR_GENERAL)->text, "%1 ");
    }
};

PANEL_TEST_MAIN(TestErrorCatalogue)
#include "tst_errorcatalogue.moc"
