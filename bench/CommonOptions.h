#pragma once

#include "bench/Report.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

namespace bench {

constexpr qint64 mebibyte = 1048576;

/// The options that all benchmarks have.
struct CommonOptions {
    qint64 size; ///< bytes of a big file
    int runs;
    bool json;

    /// Gives the parser these options, --help and what that says of the program.
    static void prepare(QCommandLineParser& parser, const char* description);
    /// Throws std::runtime_error for a value that is none.
    [[nodiscard]] static CommonOptions of(const QCommandLineParser& parser);

    /// Writes the report in the form that was asked for.
    void print(const Report& report) const;
};

} // namespace bench
