#include "suite/wait.h"

#include <QEventLoop>
#include <QTimer>

namespace kolmera {

void Vänta(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, [&loop] { loop.quit(); });
    loop.exec();
}

}  // namespace kolmera
