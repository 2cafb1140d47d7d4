#pragma once

#include "protocol/V4Stream.h"
#include "support/PrivateHome.h"
#include "support/ProgramUnderTest.h"
#include "support/QtPrinting.h"
#include "support/TcpClient.h"
#include "support/UploadStream.h"
#include "support/Waiting.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

namespace e2e {

using namespace Qt::StringLiterals;

/// The receiver program; the build tells where it is.
inline const QString receiverProgram = QStringLiteral(FERRYLANE_PROGRAM);

/// A plain answer of the service.
[[nodiscard]] QByteArray plainAnswer(const QByteArray& status, const QByteArray& body);

inline const QByteArray stored = plainAnswer("200 OK", "OK SHA256");
inline const QByteArray busy = plainAnswer("409 Conflict", "BUSY");
inline const QByteArray ready = plainAnswer("200 OK", "READY");

[[nodiscard]] QByteArray getRequest(const QByteArray& target);
/// The service's answer to whether it is ready.
[[nodiscard]] QByteArray readiness();

/// A transfer of a file called `name`.
[[nodiscard]] ferrylane::V4Transfer transferOf(const QString& name, qint64 size);

/// The head of an upload and its body, for tests that send them piece by piece.
struct UploadBytes {
    QByteArray head;
    QByteArray body;

    [[nodiscard]] QByteArray all() const { return head + body; }
    /// Head and body but for the last few bytes: the service waits for the rest.
    [[nodiscard]] QByteArray withoutEnd() const { return all().chopped(5); }
    [[nodiscard]] QByteArray end() const { return all().last(5); }
};

/// Outcome of a run of the command-line phone.
struct PhoneRun {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

/// A running receiver in a home of its own.
class ReceiverTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(program_.start()) << home_.log().constData(); }

    [[nodiscard]] QByteArray head(
        const ferrylane::V4Transfer& transfer, const QString& senderName = u"Pixel 8"_s) const;
    /// A faultless upload by "Pixel 8".
    [[nodiscard]] UploadBytes upload(const QString& name, const QByteArray& content) const;
    [[nodiscard]] std::vector<QByteArray> recordsOf(const ferrylane::V4Transfer& transfer,
        const QByteArray& content, qsizetype bytesPerRecord) const;

    /// Runs the command-line phone in this home.
    [[nodiscard]] PhoneRun phone(const QStringList& arguments) const;

    /// The service is free and nothing is left of an upload that did not succeed.
    void expectNoTrace() const;

    support::PrivateHome home_;
    support::ProgramUnderTest program_{receiverProgram, home_};
};

} // namespace e2e
