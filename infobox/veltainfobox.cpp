#include "infobox/veltainfobox.h"

#include "infobox/infotext.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"
#include "settings/screenclass.h"
#include "settings/veltautils.h"

#include <QApplication>
#include <QDebug>
#include <QDialog>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace {

constexpr quint8 MaxCountdown = 120;
constexpr std::chrono::seconds CountdownInterval(1);
constexpr qint16 LastWarningCode = -199;
constexpr int FontPointSize = 8;
constexpr int FrameWidth = 1;
constexpr int FrameSpacing = 2;
constexpr int TitlePadding = 4;

/// Characters per line, by the screen class.
struct LineLengths
{
    int nShort;
    int nLong;
    int forClass(int index) const
    {
        return screenClassRow(index).lines == Lines::Short ? nShort : nLong;
    }
};
constexpr LineLengths MessageLine{26, 38};
constexpr LineLengths InformationLine{40, 50};

// Where a text does not fit: lines get shorter, then the font smaller, then the text is cut.
constexpr int MinLineLength = 12;
/// Lower than any line: what no screen can hold is not even laid out.
constexpr int MinLinePixels = 8;

/// Title colours in the order of VeltaInfoBox::Kind.
constexpr QLatin1String TitleColours[] = {QLatin1String("grey"), QLatin1String("red"),
                                          QLatin1String("orange"), QLatin1String("blue")};

QString whiteBackground()
{
    return QStringLiteral("* { background-color: white; }");
}

} // namespace

/// The message box as a part of another window. On its own it would take a size by rules for a
/// window when it is shown and whenever a button's text changes, and grow out of the frame.
class VeltaInfoBox::MessageBody : public QMessageBox
{
    // No Q_OBJECT: fonts are scaled by the exact class name.
public:
    explicit MessageBody(QWidget *parent) : QMessageBox(parent)
    {
        setWindowFlags(Qt::Widget);
        setAttribute(Qt::WA_Moved); // the layout positions it
    }

    /// Shows \a wrapped, whose lines are broken already. The "nobr" around it would turn blanks
    /// into no-break spaces, which are twice as wide in the panel's font.
    void setWrappedText(QString wrapped)
    {
        setText(wrapped.remove(QLatin1String("<nobr>")).remove(QLatin1String("</nobr>")));
    }

    /// The least size that shows everything.
    QSize contentSize()
    {
        layoutWithoutWrap();
        return layout()->totalMinimumSize();
    }

    void setBodySize(const QSize &size)
    {
        bodySize = size;
        setFixedSize(size);
    }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::LayoutRequest) {
            return QDialog::event(event); // NOLINT(bugprone-parent-virtual-call)
        }
        return QMessageBox::event(event);
    }

    void showEvent(QShowEvent *event) override
    {
        QMessageBox::showEvent(event);
        layoutWithoutWrap();
        setFixedSize(bodySize);
    }

private:
    void layoutWithoutWrap()
    {
        // The text carries its own line breaks; by itself QMessageBox makes it wrap when shown.
        const auto labels = findChildren<QLabel *>();
        for (QLabel *pLabel : labels) {
            pLabel->setWordWrap(false);
        }
        layout()->activate();
    }

    QSize bodySize;
};

VeltaInfoBox::VeltaInfoBox(qint16 code, quint8 countdown, QWidget *owner, bool showNow, bool modal)
    : VeltaInfoBox(code, QString(), QString(), countdown, owner, showNow, modal)
{ }

VeltaInfoBox::VeltaInfoBox(qint16 code, const QString &text, quint8 countdown, QWidget *owner,
                           bool showNow, bool modal)
    : VeltaInfoBox(code, text, QString(), countdown, owner, showNow, modal)
{ }

VeltaInfoBox::VeltaInfoBox(const QString &text, quint8 countdown, QWidget *owner, bool showNow,
                           bool modal)
    : VeltaInfoBox(0, text, QString(), countdown, owner, showNow, modal)
{ }

VeltaInfoBox::VeltaInfoBox(qint16 code, const QString &text, const QString &buttonText,
                           quint8 countdown, QWidget *owner, bool showNow, bool modal)
    : nCountdown(std::min(countdown, MaxCountdown)), nCode(code),
      kind(code == 0 ? Kind::Information : Kind::Error), sText(text), sButtonText(buttonText),
      pDialog(std::make_unique<QDialog>()), pOwner(owner), pUtils(std::make_unique<VeltaUtils>())
{
    pFrame = new QFrame(pDialog.get());
    pTitleLabel = new QLabel(pFrame);
    pMessageBox = new MessageBody(pFrame);
    pFrameLayout = new QVBoxLayout(pFrame);
    pDialogLayout = new QVBoxLayout(pDialog.get());
    if (showNow) {
        showBox(modal);
    }
}

VeltaInfoBox::~VeltaInfoBox() = default;

void VeltaInfoBox::setWarning(const QString &title)
{
    kind = Kind::Warning;
    sTitle = title;
}

void VeltaInfoBox::showBox(bool modal)
{
    bModal = modal;
    if (nCode == 0) {
        prepareInformation();
    } else {
        bModal = modal || nCode < LastWarningCode || nCountdown > 0;
        prepareMessage();
    }
    buildBox();
    connect(pMessageBox, &QMessageBox::buttonClicked, this, &VeltaInfoBox::ButtonPressed,
            Qt::UniqueConnection);
    if (bModal) {
        pDialog->exec();
        closeBox();
    }
}

void VeltaInfoBox::closeBox()
{
    stopCountdown();
    pMessageBox->disconnect();
    if (pDialog->isVisible()) {
        pDialog->hide();
    }
}

void VeltaInfoBox::ButtonPressed(QAbstractButton * /*pButton*/)
{
    closeBox();
}

void VeltaInfoBox::CountDown()
{
    if (nCountdown == 0) {
        return;
    }
    if (nRemaining == 0) {
        closeBox();
        pMessageBox->accept();
        return;
    }
    --nRemaining;
    if (QAbstractButton *pButton = pMessageBox->button(QMessageBox::Ok)) {
        const QString base = sButtonText.isEmpty() ? pButton->text() : sButtonText;
        pButton->setText(base + tr(" (%1)").arg(nRemaining));
    } else {
        qDebug("could not get pointer to countdown button !!!");
    }
}

void VeltaInfoBox::prepareMessage()
{
    if (bPrepared) {
        return;
    }
    readScreen();
    const ErrorEntry *pEntry = findError(nCode);
    if (!pEntry) {
        return;
    }
    QString prefix;
    if (nCode < LastWarningCode) {
        prefix = tr("Error %1: ");
        pMessageBox->setWindowTitle(tr("<center>Error</center>"));
    } else {
        prefix = tr("Warning %1: ");
        pMessageBox->setWindowTitle(tr("<center>Warning</center>"));
        kind = Kind::Warning;
    }
    setMessage(prefix.arg(nCode) + InfoText::compose(errorText(*pEntry), sText),
               MessageLine.forClass(nResIndex));
    pMessageBox->setIcon(static_cast<QMessageBox::Icon>(pEntry->nIcon));
    pMessageBox->setStandardButtons(QMessageBox::StandardButtons(pEntry->nButtons));
    pMessageBox->setDefaultButton(QMessageBox::Ok);
    scaleToScreen();
    const QAbstractButton *pOk = pMessageBox->button(QMessageBox::Ok);
    startCountdown(sButtonText.isEmpty() && pOk ? pOk->text() : sButtonText);
    bPrepared = true;
}

void VeltaInfoBox::prepareInformation()
{
    if (bPrepared) {
        return;
    }
    readScreen();
    pMessageBox->setWindowTitle(sTitle.isEmpty()
                                    ? tr("<center>Information</center>")
                                    : QStringLiteral("<center>%1</center>").arg(sTitle));
    setMessage(sText, InformationLine.forClass(nResIndex));
    pMessageBox->setIcon(kind == Kind::Warning ? QMessageBox::Warning : QMessageBox::Information);
    pMessageBox->setStandardButtons(QMessageBox::Ok);
    pMessageBox->setDefaultButton(QMessageBox::Ok);
    scaleToScreen();
    startCountdown(tr("OK"));
    if (nCountdown > 0) {
        pMessageBox->button(QMessageBox::Ok)->setText(tr("OK (%1)").arg(nRemaining));
    }
    bPrepared = true;
}

void VeltaInfoBox::readScreen()
{
    const QSize size = QApplication::primaryScreen()->geometry().size();
    nScreenW = static_cast<qint16>(size.width());
    nScreenH = static_cast<qint16>(size.height());
    nResIndex = screenClass(nScreenW, nScreenH, UnlistedHeightAt800::As800x480).nIndex;
}

void VeltaInfoBox::setMessage(const QString &text, int lineLength)
{
    sMessage = text.left(nScreenH / MinLinePixels * lineLength);
    nLineLength = lineLength;
    pMessageBox->setTextFormat(Qt::RichText);
    pMessageBox->setWrappedText(InfoText::wrap(sMessage, nLineLength));
}

void VeltaInfoBox::scaleToScreen()
{
    QFont font;
    font.setPointSize(FontPointSize);
    pMessageBox->setFont(font);
    pUtils->scaleFont(pMessageBox, nResIndex);
    nTextPoints = pMessageBox->font().pointSize();
    // All buttons alike: Abort beside Ok is no smaller.
    const auto buttons = pMessageBox->buttons();
    for (QAbstractButton *pButton : buttons) {
        pButton->setAttribute(Qt::WA_AcceptTouchEvents);
        pButton->setFont(font);
        pUtils->scaleFont(pButton, nResIndex);
        nButtonPoints = pButton->font().pointSize();
        pUtils->scaleWidth(pButton, false);
        pButton->setMinimumHeight(LeastButtonHeight);
    }
}

void VeltaInfoBox::startCountdown(const QString &buttonText)
{
    if (nCountdown == 0) {
        return;
    }
    if (!pCountdownTimer) {
        pCountdownTimer = new QTimer(this);
    }
    nRemaining = nCountdown;
    sButtonText = buttonText;
    if (QAbstractButton *pButton = pMessageBox->button(QMessageBox::Ok)) {
        pButton->setText(sButtonText + tr(" (%1)").arg(nRemaining));
    }
    connect(pCountdownTimer, &QTimer::timeout, this, &VeltaInfoBox::CountDown);
    pCountdownTimer->start(CountdownInterval);
}

void VeltaInfoBox::stopCountdown()
{
    if (pCountdownTimer) {
        // It may be the timer that calls.
        pCountdownTimer->disconnect();
        pCountdownTimer->stop();
        pCountdownTimer->deleteLater();
        pCountdownTimer = nullptr;
    }
}

void VeltaInfoBox::buildBox()
{
    if (bBuilt) {
        pMessageBox->show();
        presentDialog();
        return;
    }
    pMessageBox->setStyleSheet(whiteBackground());
    if (pMessageBox->buttons().isEmpty()) {
        // QMessageBox would add it only when shown, too late for the size.
        pMessageBox->addButton(QMessageBox::Ok);
        pMessageBox->setDefaultButton(QMessageBox::Ok);
        scaleToScreen();
    }

    const QString title = pMessageBox->windowTitle();
    pTitleLabel->setAutoFillBackground(true);
    pTitleLabel->setStyleSheet(QStringLiteral("* { background-color: %1; color: white }")
                                   .arg(TitleColours[static_cast<int>(kind)]));
    pTitleLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    pTitleLabel->setText(title.startsWith(QLatin1Char(' ')) ? title : QLatin1Char(' ') + title);

    pFrameLayout->setContentsMargins(0, 0, 0, 0);
    pFrameLayout->setSpacing(FrameSpacing);
    pFrameLayout->addWidget(pTitleLabel);
    pFrameLayout->addWidget(pMessageBox);
    pFrame->setStyleSheet(whiteBackground());
    pFrame->setLineWidth(FrameWidth);
    pFrame->setFrameShape(QFrame::Box);
    pFrame->setAttribute(Qt::WA_AcceptTouchEvents);

    pDialogLayout->setContentsMargins(0, 0, 0, 0);
    pDialogLayout->addWidget(pFrame, 0, Qt::AlignCenter);
    pDialogLayout->setSizeConstraint(QLayout::SetFixedSize);
    pDialog->setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    pDialog->setAttribute(Qt::WA_AcceptTouchEvents);

    fitToScreen();
    // The size is final before the window appears, so it appears where it stays.
    pDialogLayout->activate();
    pDialog->adjustSize();
    pDialog->move((nScreenW - pDialog->width()) / 2, (nScreenH - pDialog->height()) / 2);
    presentDialog();
    bBuilt = true;
}

void VeltaInfoBox::presentDialog()
{
    pDialog->setWindowModality(bModal ? Qt::ApplicationModal : Qt::NonModal);
    pDialog->show();
    pDialog->raise();
    if (QPushButton *pDefault = pMessageBox->defaultButton()) {
        pDefault->setFocus();
    }
}

QSize VeltaInfoBox::setLayout(int fontSize, int lineLength)
{
    const auto resize = [](QWidget *widget, int points) {
        QFont font = widget->font();
        if (font.pointSize() != points) {
            font.setPointSize(points);
            widget->setFont(font);
        }
    };
    resize(pMessageBox, fontSize);
    const auto buttons = pMessageBox->buttons();
    for (QAbstractButton *pButton : buttons) {
        // Its font is another one, and shrinks in the same proportion.
        resize(pButton, std::max(smallestPoints(), nButtonPoints * fontSize / nTextPoints));
        // Fewer digits of a count-down must not make the button jump.
        pButton->setMinimumWidth(0);
        pButton->setMinimumWidth(pButton->sizeHint().width());
    }
    pMessageBox->setWrappedText(InfoText::wrap(sMessage, lineLength));

    QFont titleFont = pMessageBox->font();
    titleFont.setBold(true);
    pTitleLabel->setFont(titleFont);
    pTitleLabel->setFixedHeight(pTitleLabel->fontMetrics().height() + TitlePadding);

    const QSize body = pMessageBox->contentSize();
    const int width = std::max(body.width(), pTitleLabel->sizeHint().width());
    pMessageBox->setBodySize({width, body.height()});
    return {width + 2 * FrameWidth,
            pTitleLabel->height() + FrameSpacing + body.height() + 2 * FrameWidth};
}

void VeltaInfoBox::fitToScreen()
{
    const auto fitsWidth = [this](QSize size) { return size.width() <= nScreenW; };
    const auto fitsHeight = [this](QSize size) { return size.height() <= nScreenH; };

    int fontSize = nTextPoints;
    int lineLength = nLineLength;
    QSize size = setLayout(fontSize, lineLength);
    while (!fitsWidth(size) || !fitsHeight(size)) {
        if (!fitsWidth(size) && lineLength > MinLineLength) {
            const int widest = pMessageBox->fontMetrics().horizontalAdvance(QLatin1Char('W'));
            const int excess = std::max(1, (size.width() - nScreenW) / widest);
            lineLength = std::max(MinLineLength, lineLength - excess);
        } else if (fontSize > smallestPoints()) {
            // Text shrinks with its font, at least in this proportion.
            fontSize =
                std::clamp(fontSize * nScreenH / size.height(), smallestPoints(), fontSize - 1);
            lineLength = nLineLength;
        } else if (!fitsHeight(size) && !sMessage.isEmpty()) {
            // The rest of the text is lost, but not the way on: the buttons stay on the screen.
            const int lineHeight = pMessageBox->fontMetrics().lineSpacing();
            const int excess = (size.height() - nScreenH + lineHeight - 1) / lineHeight;
            sMessage.truncate(std::max<qsizetype>(0, sMessage.size() - excess * lineLength));
            if (!sMessage.isEmpty()) {
                sMessage.back() = QChar(0x2026); // ...
            }
        } else {
            return;
        }
        size = setLayout(fontSize, lineLength);
    }
}
