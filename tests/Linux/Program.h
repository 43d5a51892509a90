#pragma once

#include "Eventually.h"

#include <QProcess>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>

namespace orvanta {

using namespace Qt::StringLiterals;

/// A program that ends with the test, however that ends.
class Program {
public:
    Program(const QString& program, const QStringList& arguments) {
        process_.setStandardErrorFile(QProcess::nullDevice());
        process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        process_.start(program, arguments);
        EXPECT_TRUE(process_.waitForStarted()) << qPrintable(program);
    }
    ~Program() { kill(); }

    void kill() {
        process_.kill();
        process_.waitForFinished();
    }
    void writeLine(const QByteArray& line) { process_.write(line + '\n'); }
    QByteArray nextLine() {
        EXPECT_TRUE(eventually([this] { return process_.canReadLine(); }));
        return process_.readLine().trimmed();
    }

private:
    QProcess process_;
};

} // namespace orvanta
