#pragma once

// What nearly every test of this room uses.

#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvanta {

using namespace Qt::StringLiterals;

/// Runs the main loop until the condition holds; false if it does not within twenty seconds.
template <typename Condition>
bool eventually(Condition condition) {
    constexpr qint64 patience = 20'000; // ms
    QTimer look;                        // for conditions that no event of ours announces
    look.start(10);
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.hasExpired(patience)) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// A private folder, as of desktop entries or of processes. An absolute path stays one.
class TemporaryFolder {
public:
    QString path(const QString& relative = {}) const {
        return QDir(folder_.path()).filePath(relative);
    }

    void write(const QString& relative, const QByteArray& content) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    /// Empty also where there is none.
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeProgram(const QString& relative, const QByteArray& script = {}) const {
        write(relative, "#!/bin/sh\n" + script);
        QFile::setPermissions(path(relative),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void link(const QString& target, const QString& relative) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile::remove(path(relative));
        ASSERT_TRUE(QFile::link(target, path(relative)));
    }

    /// An entry whose program exists on every system.
    void writeEntry(const QString& id, const QByteArray& lines = {}) const {
        write(id + u".desktop"_s, "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() + "\n" +
                                      (lines.contains("Exec=") ? "" : "Exec=true %U\n") + lines);
    }

private:
    QTemporaryDir folder_;
};

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
    qint64 process() const { return process_.processId(); }
    void writeLine(const QByteArray& line) { process_.write(line + '\n'); }
    QByteArray nextLine() {
        EXPECT_TRUE(eventually([this] { return process_.canReadLine(); }));
        return process_.readLine().trimmed();
    }

private:
    QProcess process_;
};

} // namespace orvanta
