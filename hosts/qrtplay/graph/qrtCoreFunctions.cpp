#include "graph/qrtCoreFunctions.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_2_Core>
#if QT_VERSION_MAJOR > 5
#include <QOpenGLVersionFunctionsFactory>
#endif

namespace qrtplay {

QOpenGLFunctions_3_2_Core* currentCoreFunctions() {
    QOpenGLContext* const context = QOpenGLContext::currentContext();
    if (!context) return nullptr;
#if QT_VERSION_MAJOR == 5
    auto* const core = context->versionFunctions<QOpenGLFunctions_3_2_Core>();
#else
    auto* const core = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_2_Core>(context);
#endif
    return core && core->initializeOpenGLFunctions() ? core : nullptr;
}

}  // namespace qrtplay
