#include "platform/requestfile.h"
#include "tests/support/devicetest.h"
#include "tests/support/lockedfolder.h"

class RequestFileTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    // One that cannot be removed is served once, and again when it is made again.
    void servedOnce()
    {
        root().write("/tmp/ask", "");
        RequestFile request("/tmp/ask");
        QVERIFY(request.isPending());
        request.begin();
        {
            const LockedFolder locked(root(), "/tmp");
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("/tmp/ask cannot be removed"));
            QVERIFY(!request.finish() && !request.isPending());
            QVERIFY(request.isBegun());
        }
        root().remove("/tmp/ask");
        root().write("/tmp/ask", "again");
        QVERIFY(request.isPending() && !request.isBegun());
        QVERIFY(request.finish() && !root().exists("/tmp/ask"));
        QVERIFY(!request.isPending());
    }
};

PANEL_TEST_MAIN(RequestFileTest)
#include "tst_requestfile.moc"
