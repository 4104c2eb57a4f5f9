#include <QApplication>
#include <QLabel>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QLabel label(QStringLiteral("Starting PLC..."));
    label.showFullScreen();
    return QApplication::exec();
}
