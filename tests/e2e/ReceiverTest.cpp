#include "ReceiverTest.h"

#include "support/ChildProcess.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>

namespace e2e {

QByteArray plainAnswer(const QByteArray& status, const QByteArray& body)
{
    return "HTTP/1.1 " + status
        + "\r\nContent-Type: text/plain\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" + body;
}

QByteArray getRequest(const QByteArray& target)
{
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:8788\r\nConnection: close\r\n\r\n";
}

QByteArray readiness()
{
    return support::answerTo(getRequest("/transfer-status"));
}

ferrylane::V4Transfer transferOf(const QString& name, qint64 size)
{
    ferrylane::V4Transfer transfer = support::testTransfer(size);
    transfer.fileName = name;
    return transfer;
}

QByteArray ReceiverTest::head(
    const ferrylane::V4Transfer& transfer, const QString& senderName) const
{
    return ferrylane::uploadRequestHead(transfer, u"127.0.0.1"_s, 8788, senderName);
}

UploadBytes ReceiverTest::upload(const QString& name, const QByteArray& content) const
{
    const auto transfer = transferOf(name, content.size());
    return {head(transfer),
        support::chunkedBody(support::sealedRecords(home_.key(), transfer, content))};
}

std::vector<QByteArray> ReceiverTest::recordsOf(const ferrylane::V4Transfer& transfer,
    const QByteArray& content, qsizetype bytesPerRecord) const
{
    return support::sealedRecords(home_.key(), transfer, content, bytesPerRecord);
}

PhoneRun ReceiverTest::phone(const QStringList& arguments) const
{
    const QTemporaryDir streams;
    support::Command command;
    command.program = QStringLiteral(FERRYLANE_PHONE_PROGRAM);
    command.arguments = arguments;
    command.environment = home_.environment();
    command.outputFile = streams.filePath(u"output"_s);
    command.errorFile = streams.filePath(u"errors"_s);
    support::ChildProcess process;
    process.start(command);
    const auto exitCode = process.waitForEnd(std::chrono::seconds(100));
    return {exitCode.value_or(-1), support::contentOf(command.outputFile),
        support::contentOf(command.errorFile)};
}

void ReceiverTest::expectNoTrace() const
{
    EXPECT_EQ(readiness(), ready);
    EXPECT_EQ(home_.partialFiles(), QStringList());
}

} // namespace e2e
