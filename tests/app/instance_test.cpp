#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <cstring>

#include "app/settings.hpp"
#include "app/single_instance.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"

namespace tidewell::testing {
namespace {

QString uniqueName(const char* what) {
    return QStringLiteral("tidewell-test-%1-%2").arg(::getpid()).arg(QLatin1String(what));
}

TEST(SingleInstanceTest, ASecondStartHandsOverToTheFirst) {
    SingleInstance first(uniqueName("handover"));
    ASSERT_TRUE(first.listen());
    QSignalSpy reopened(&first, &SingleInstance::reopenRequested);

    EXPECT_TRUE(SingleInstance(uniqueName("handover")).handOverToRunningInstance());
    EXPECT_TRUE(QTest::qWaitFor([&] { return reopened.count() == 1; }, 5000));
    EXPECT_FALSE(SingleInstance(uniqueName("nobody")).handOverToRunningInstance(std::chrono::milliseconds(200)));
}

TEST(SingleInstanceTest, TheSocketOfATidewellThatCrashedDoesNotBlockTheNextStart) {
    // A socket file bound and left behind, as a process that died would leave it.
    const QString name = uniqueName("stale");
    const QByteArray path = QFile::encodeName(QDir::tempPath() + "/" + name);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(fd);

    SingleInstance next(name);
    EXPECT_FALSE(next.handOverToRunningInstance(std::chrono::milliseconds(200)));
    EXPECT_TRUE(next.listen());
}

// The real program, with its folders in a temporary place.
class ProgramTest : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder disk{temp.path() + "/disk"};

    void SetUp() override { disk.folder("Documents"); }

    std::unique_ptr<QProcess> start(const QStringList& arguments, const QString& display = {}) {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (display.isEmpty()) {
            environment.insert("QT_QPA_PLATFORM", "offscreen");
        } else {
            environment.insert("QT_QPA_PLATFORM", "xcb");
            environment.insert("DISPLAY", display);
        }
        environment.insert("HOME", QString::fromStdString(temp.path()));
        environment.insert("XDG_CONFIG_HOME", QString::fromStdString(temp.path() + "/config"));
        environment.insert("XDG_DATA_HOME", QString::fromStdString(temp.path() + "/data"));
        process->setProcessEnvironment(environment);
        process->start(QStringLiteral(TIDEWELL_PROGRAM), arguments);
        return process;
    }
};

TEST_F(ProgramTest, ABadDiskOrUserIsAUsageError) {
    for (const QStringList& arguments :
         {QStringList{"--root", QString::fromStdString(temp.path() + "/missing")},
          QStringList{"--root", QString::fromStdString(disk.root()), "--user", ".."}, QStringList{"--bogus"}}) {
        const auto process = start(arguments);
        ASSERT_TRUE(process->waitForFinished(20000));
        EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process->exitCode(), 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(process->readAllStandardError().contains("tidewell: "));
    }
}

TEST_F(ProgramTest, ASecondStartEndsAfterHandingOverAndTheFirstHasStarted) {
    const QStringList arguments{"--root", QString::fromStdString(disk.root()), "--user", "ann"};
    const auto first = start(arguments);
    const QString settings = QString::fromStdString(temp.path() + "/config/tidewell/tidewell.conf");
    const QString socket = QDir::tempPath() + "/" + SingleInstance::serverNameFor(settings);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(socket); }, 20000)) << "the first start listens";

    const auto second = start(arguments);
    EXPECT_TRUE(second->waitForFinished(20000));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_EQ(first->state(), QProcess::Running);

    // The first went through the start-up: crash reporting is ready and "Scan" is written.
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile(settings).size() > 0; }, 5000));
    EXPECT_TRUE(QDir(QString::fromStdString(temp.path() + "/data/tidewell/Crash Reports")).exists());
    first->kill();
    first->waitForFinished(5000);
    QLocalServer::removeServer(SingleInstance::serverNameFor(settings));
}

// On an X display, as on a person's desktop, the window takes paths the offscreen tests never reach (the look for a
// compositing manager among them): the granted start must show the main window and keep running.
TEST_F(ProgramTest, OnAnXDisplayTheGrantedStartShowsTheMainWindow) {
    const QString xvfb = QStandardPaths::findExecutable("Xvfb");
    if (xvfb.isEmpty()) {
        GTEST_SKIP() << "no Xvfb to give the program an X display";
    }
    QProcess server;
    server.start(xvfb, {"-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp"});
    ASSERT_TRUE(server.waitForReadyRead(20000)) << "Xvfb names its display";
    const QString display = ":" + QString::fromLatin1(server.readLine()).trimmed();

    const QString settings = QString::fromStdString(temp.path() + "/config/tidewell/tidewell.conf");
    const auto grant = createFolderGrant(disk.home());
    ASSERT_TRUE(grant);
    AppSettings(settings).setBytes(keys::kHomeGrant, QByteArray::fromStdString(grantToBytes(*grant)));

    const auto program = start({"--root", QString::fromStdString(disk.root()), "--user", "ann"}, display);
    // A first start writes its taskbar choice back once the main window is made.
    const auto windowMade = [&] { return QSettings(settings, QSettings::IniFormat).contains(keys::kTaskbarEntry); };
    EXPECT_TRUE(QTest::qWaitFor([&] { return windowMade() || program->state() != QProcess::Running; }, 20000));
    QTest::qWait(500);
    EXPECT_TRUE(windowMade());
    EXPECT_EQ(program->state(), QProcess::Running) << program->readAllStandardError().toStdString();
    EXPECT_TRUE(QDir(QString::fromStdString(temp.path() + "/data/tidewell/Crash Reports"))
                    .entryList(QDir::Files)
                    .isEmpty());
    program->kill();
    program->waitForFinished(5000);
    server.terminate();
    server.waitForFinished(5000);
    QLocalServer::removeServer(SingleInstance::serverNameFor(settings));
}

} // namespace
} // namespace tidewell::testing
