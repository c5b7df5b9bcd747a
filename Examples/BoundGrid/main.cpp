// A grid and a list that share one selection.

#include "BoundGridWindow.h"

#include "Platform/Interface/Application.h"

int main(int argc, char **argv)
{
    platform::Application application(argc, argv);
    BoundGridWindow window;
    window.show();
    return QApplication::exec();
}
