#pragma once

#include <QDir>
#include <QImage>
#include <QPainter>

/// The pictures of all pages on one screen: each goes into a file of its own in the folder
/// PANEL_SCREENSHOTS, small ones side by side into "sheet-SCREEN.png". Where PANEL_REFERENCE names
/// such a folder they are compared with those there.
class ContactSheet
{
public:
    explicit ContactSheet(const QString &screen)
        : sScreen(QString(screen).replace(' ', '-')),
          folder(qEnvironmentVariable("PANEL_SCREENSHOTS")),
          reference(qEnvironmentVariable("PANEL_REFERENCE")),
          bCompare(qEnvironmentVariableIsSet("PANEL_REFERENCE"))
    { }

    /// False when it differs from the picture of the same view in the reference, were it by a
    /// single pixel.
    bool add(const QString &view, const QImage &picture)
    {
        const QString name = sScreen + '_' + view + ".png";
        names += name;
        picture.save(folder.filePath(name));
        if (cell.isEmpty()) { // the first one is of the whole screen
            cell = picture.size().scaled(Width, Width, Qt::KeepAspectRatio);
            nScale = double(cell.width()) / picture.width();
        }
        small +=
            picture.scaled(picture.size() * nScale, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        return !bCompare
            || QImage(reference.filePath(name)).convertToFormat(picture.format()) == picture;
    }

    /// Paints the sheet. Returns what the reference has and these pictures have not.
    QStringList finish()
    {
        const QSize step = cell + QSize(Gap, Gap + Caption);
        const int nRows = int(names.size() + Columns - 1) / Columns;
        QImage sheet(Columns * step.width(), nRows * step.height(), QImage::Format_RGB32);
        sheet.fill(Qt::darkGray);
        QPainter painter(&sheet);
        for (int i = 0; i < names.size(); ++i) {
            const QPoint place(i % Columns * step.width(), i / Columns * step.height());
            painter.drawText(QRect(place, QSize(cell.width(), Caption)), Qt::AlignCenter, names[i]);
            painter.drawImage(place + QPoint(0, Caption), small[i]);
        }
        sheet.save(folder.filePath("sheet-" + sScreen + ".png"));
        QStringList missing =
            bCompare ? reference.entryList({sScreen + "_*.png"}, QDir::Files) : QStringList();
        missing.removeIf([this](const QString &name) { return names.contains(name); });
        return missing;
    }

private:
    static constexpr int Columns = 5;
    static constexpr int Width = 320; // pixels, or the height where that is more
    static constexpr int Gap = 8;
    static constexpr int Caption = 20;

    QString sScreen;
    QDir folder;
    QDir reference;
    bool bCompare;
    QStringList names;
    QList<QImage> small;
    QSize cell; ///< of one small picture
    double nScale = 1;
};
