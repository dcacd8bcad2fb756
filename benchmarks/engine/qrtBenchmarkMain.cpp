// Runs the benchmarks of a program that needs OpenGL.
#include <benchmark/benchmark.h>

#include <QGuiApplication>

#include "foundation/logger/qrtLogMsg.h"

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    // The engine says when look-ahead waits for a frame that the host still holds, which here is all the time.
    QRT_0_81::LogMsg::setSink([](QRT_0_81::LogMsg const&) {});
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
