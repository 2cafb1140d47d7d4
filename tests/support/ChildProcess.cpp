#include "support/ChildProcess.h"

#include "support/Waiting.h"

#include <QFile>

#include <csignal>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

namespace {

/// Strings as exec(3) wants them.
class StringList {
public:
    explicit StringList(const QStringList& strings)
    {
        for (const QString& string : strings) {
            strings_.push_back(QFile::encodeName(string));
        }
        for (QByteArray& string : strings_) {
            pointers_.push_back(string.data());
        }
        pointers_.push_back(nullptr);
    }

    [[nodiscard]] char* const* data() const { return pointers_.data(); }

private:
    std::vector<QByteArray> strings_;
    std::vector<char*> pointers_;
};

// In the child.
void redirect(int stream, const QByteArray& path)
{
    if (path.isEmpty()) return;
    const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (dup2(file, stream) < 0) _exit(127);
}

} // namespace

ChildProcess::~ChildProcess()
{
    kill();
}

void ChildProcess::start(const Command& command)
{
    const StringList arguments(QStringList(command.program) + command.arguments);
    const StringList environment(command.environment.toStringList());
    const QByteArray output = QFile::encodeName(command.outputFile);
    const QByteArray errors = QFile::encodeName(command.errorFile);

    processId_ = fork();
    if (processId_ < 0) throw std::system_error(errno, std::system_category(), "fork");
    if (processId_ > 0) return;

    redirect(STDOUT_FILENO, output);
    redirect(STDERR_FILENO, errors);
    // An ignored signal would stay so in the program.
    std::signal(SIGPIPE, SIG_DFL);
    if (command.beforeProgram) command.beforeProgram();
    execve(arguments.data()[0], arguments.data(), environment.data());
    _exit(127);
}

void ChildProcess::signal(int number) const
{
    if (processId_ > 0) ::kill(processId_, number);
}

bool ChildProcess::isRunning()
{
    if (processId_ > 0 && waitpid(processId_, &status_, WNOHANG) == processId_) processId_ = 0;
    return processId_ > 0;
}

std::optional<int> ChildProcess::waitForEnd(std::chrono::milliseconds limit)
{
    if (!waitUntil([this] { return !isRunning(); }, limit) || !WIFEXITED(status_)) {
        return std::nullopt;
    }
    return WEXITSTATUS(status_);
}

void ChildProcess::kill()
{
    signal(SIGKILL);
    waitForEnd(patience);
}

} // namespace support
