// The least that a Qt Widgets program can do: the measure for the start of the real one.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.showMaximized();
    return application.exec();
}
