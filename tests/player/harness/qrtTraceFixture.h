#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <string>

#include "harness/qrtTraceDocument.h"
#include "qrtTrace.h"

namespace QRT_0_81 {

/// A folder for traces; none is on before or after a test.
class TraceFixture : public ::testing::Test {
protected:
    ~TraceFixture() override { Trace::stop(); }

    [[nodiscard]] std::string pathOf(std::string const& name) const {
        return folder.filePath(QString::fromStdString(name)).toStdString();
    }
    void start() { ASSERT_TRUE(Trace::start(path.c_str())); }
    [[nodiscard]] TraceDocument stopAndRead() const {
        Trace::stop();
        return TraceDocument(TraceDocument::textOf(path));
    }

    const QTemporaryDir folder;
    const std::string path = pathOf("trace.json");
};

}  // namespace QRT_0_81
