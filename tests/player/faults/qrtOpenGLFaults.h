#pragma once

#include <string>

namespace QRT_0_81 {

/// Lets an operation fail that no driver at hand can be brought to fail, for one scope.
///
/// The program defines the operations of Qt under their own names, so that the player library, which looks them up when
/// it is loaded, gets these; they go on to Qt's own while no fault is armed. Qt's own calls of them stay in Qt.
/// Threading: armed on one thread, while the player thread is at rest or not there.
class OpenGLFault final {
public:
    enum class Operation { createContext, makeCurrent, createBuffer, bindBuffer, mapBuffer, startThread, count };

    /// `skip`: how many calls still work.
    explicit OpenGLFault(Operation operation, int skip = 0);
    ~OpenGLFault();
    OpenGLFault(OpenGLFault const&) = delete;
    OpenGLFault& operator=(OpenGLFault const&) = delete;

    /// How many calls have failed.
    [[nodiscard]] int count() const;

private:
    const Operation m_operation;
};

}  // namespace QRT_0_81
