// A host with a window and a context of its own: GLFW makes both, and plain OpenGL draws. Qt draws nothing here, but
// the player needs its application object to reach the display.
//
//   glfw_host [FRAMES]    ends after that many frames and prints the middle row of what the window shows
#define GL_GLEXT_PROTOTYPES
#define GLFW_INCLUDE_GLCOREARB
#include <GLFW/glfw3.h>

#include <QGuiApplication>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "common/bar_graph_engine.h"
#include "common/check.h"
#include "common/native_context.h"
#include "common/row_text.h"
#include "player/qrtPlayer.h"

using namespace examples;

namespace {

constexpr int64 numFrames = 240;

GLFWwindow* openWindow() {
    if (!glfwInit()) return nullptr;
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 2);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, GLFW_TRUE);
    GLFWwindow* const window = glfwCreateWindow(640, 360, "glfw_host", nullptr, nullptr);
    if (window) glfwMakeContextCurrent(window);
    return window;
}

/// The frame that is due by the clock.
int64 frameNow() {
    return static_cast<int64>(glfwGetTime() * frameRate.getValue());
}

void draw(VideoBuffer const& buffer, GLFWwindow* window, GLuint framebuffer) {
    unsigned int texture = 0;
    check(buffer.getTexture(texture));
    const VideoBufferResolution resolution = buffer.getResolution();
    int width = 0;
    int height = 0;
    glfwGetFramebufferSize(window, &width, &height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    glBlitFramebuffer(0, 0, resolution.getWidth(), resolution.getHeight(), 0, 0, width, height, GL_COLOR_BUFFER_BIT,
                      GL_LINEAR);
    // A texture that stays attached is not given back, whatever its owner does.
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, 0, 0);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glFinish();  // the player may draw into the texture anew as soon as the last reference goes
}

void printMiddleRow(GLFWwindow* window, int64 frame) {
    int width = 0;
    int height = 0;
    glfwGetFramebufferSize(window, &width, &height);
    std::vector<unsigned char> row(4 * static_cast<size_t>(width));
    glReadPixels(0, height / 2, width, 1, GL_RGBA, GL_UNSIGNED_BYTE, row.data());
    std::cout << "frame " << frame << ": " << rowText(row.data(), width) << std::endl;
}

/// Draws until the window is closed, or the frame `lastFrame` unless that is negative.
void play(Player& player, GLFWwindow* window, int64 lastFrame) {
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    for (int64 frame = 0; !glfwWindowShouldClose(window); frame = frameNow()) {
        const bool isLast = lastFrame >= 0 && frame >= lastFrame;
        if (isLast) frame = lastFrame;
        SharedPtr<VideoBuffer> buffer;  // lent until the last reference to it goes
        check(player.getVideoBuffer(frame % numFrames, buffer));
        draw(*buffer, window, framebuffer);
        if (isLast) printMiddleRow(window, frame);
        glfwSwapBuffers(window);
        if (isLast) break;
        glfwPollEvents();
    }
    glDeleteFramebuffers(1, &framebuffer);
}

}  // namespace

int main(int argc, char** argv) {
    // GLFW draws through GLX, so Qt has to.
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_XCB_GL_INTEGRATION", "xcb_glx");
    const QGuiApplication application(argc, argv);
    GLFWwindow* const window = openWindow();
    if (!window) {
        std::cerr << "glfw_host: there is no OpenGL 3.2" << std::endl;
        return EXIT_FAILURE;
    }

    const SharedPtr<Player> player =
        Player::create(VideoBufferResolution(640, 360, 4, 8, false), BarGraphEngine::create);
    const NativeContext native = currentGlxContext();
    check(player->initialize(native.context, native.window));
    check(player->setComposition(SharedPtr<Composition>(new Clip(numFrames)), {}));
    const Time start(0, frameRate);
    check(player->startProducing(PlayParams::create(start, start, Time(numFrames, frameRate), frameRate, 1,
                                                    PlayParams::loop, PlayParams::video_only)));

    play(*player, window, argc > 1 ? std::atoi(argv[1]) - 1 : -1);

    check(player->uninitialize());  // while the context that it shares with is still there
    glfwTerminate();
    return EXIT_SUCCESS;
}
