#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>

class QAbstractButton;
class QDialog;
class QFrame;
class QLabel;
class QMessageBox;
class QTimer;
class QVBoxLayout;
class VeltaUtils;

/// The one message box of the system: an error or a warning of the catalogue, or an information.
///
/// A frameless window in the middle of the screen, with a coloured title bar above icon, text and
/// buttons. Any button, Return, Space and Escape close it; with a count-down it closes by itself.
/// Made on the stack with \a showNow set; a modal box returns from the constructor once it has
/// closed, another one stays open as long as its object lives. Of the catalogue's messages, errors
/// and those with a count-down are always modal. The object itself is never visible. GUI thread
/// only.
///
/// \a countdown is in seconds, at most 120; 0 is none. \a owner, which may be null or hidden, does
/// not position the box.
class VeltaInfoBox : public QWidget
{
    Q_OBJECT

public:
    /// The catalogue message \a code (see errorcatalogue.h).
    VeltaInfoBox(qint16 code, quint8 countdown, QWidget *owner, bool showNow, bool modal);
    /// The same with \a text in the place of its "%1".
    VeltaInfoBox(qint16 code, const QString &text, quint8 countdown, QWidget *owner, bool showNow,
                 bool modal);
    /// The same; the count-down stands behind \a buttonText on the Ok button.
    VeltaInfoBox(qint16 code, const QString &text, const QString &buttonText, quint8 countdown,
                 QWidget *owner, bool showNow, bool modal);
    /// The information \a text, plain text.
    VeltaInfoBox(const QString &text, quint8 countdown, QWidget *owner, bool showNow, bool modal);
    ~VeltaInfoBox() override;

    /// Makes an information box that has not been shown yet a warning with a \a title of its own.
    void setWarning(const QString &title);

    /// Shows the box; a modal one returns when it has closed.
    void showBox(bool modal);
    /// Closes the box, which ends a modal run. The object may be shown again, but a count-down that
    /// has ended does not begin anew.
    void closeBox();

public Q_SLOTS:
    /// One second of the count-down.
    void CountDown();
    void ButtonPressed(QAbstractButton *pButton);

private:
    enum class Kind : qint32 { Other, Error, Warning, Information };
    class MessageBody;

    void prepareMessage();
    void prepareInformation();
    void readScreen();
    void setMessage(const QString &text, int lineLength);
    void scaleToScreen();
    void startCountdown(const QString &buttonText);
    void buildBox();
    void presentDialog();
    void fitToScreen();
    QSize setLayout(int fontSize, int lineLength);
    void stopCountdown();

    quint8 nCountdown = 0;
    quint8 nRemaining = 0;
    bool bModal = false;
    bool bPrepared = false;
    bool bBuilt = false;
    qint16 nScreenW = 0;
    qint16 nScreenH = 0;
    qint16 nCode = 0;
    Kind kind = Kind::Error;
    QString sTitle; // of an information box; empty: the usual one
    QString sText;
    QString sButtonText;
    QString sMessage; // what is shown, unwrapped
    int nLineLength = 0;
    int nTextPoints = 8; // font sizes before anything is made to fit
    int nButtonPoints = 8;
    int nResIndex = 0;
    std::unique_ptr<QDialog> pDialog; // owns all that it shows
    QFrame *pFrame = nullptr;
    QVBoxLayout *pFrameLayout = nullptr;
    QVBoxLayout *pDialogLayout = nullptr;
    QLabel *pTitleLabel = nullptr;
    MessageBody *pMessageBox = nullptr;
    QTimer *pCountdownTimer = nullptr; // child of this; while counting
    QPointer<QWidget> pOwner;
    std::unique_ptr<VeltaUtils> pUtils;
};
