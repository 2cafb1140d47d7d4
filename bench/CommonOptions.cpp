#include "bench/CommonOptions.h"

#include <cstdio>
#include <stdexcept>

namespace bench {

namespace {

const QCommandLineOption& sizeOption()
{
    static const QCommandLineOption option(QStringLiteral("size"),
        QStringLiteral("Size of a big upload (default 1024)."), QStringLiteral("MiB"),
        QStringLiteral("1024"));
    return option;
}

const QCommandLineOption& runsOption()
{
    static const QCommandLineOption option(QStringLiteral("runs"),
        QStringLiteral("Number of timed big uploads (default 5)."), QStringLiteral("N"),
        QStringLiteral("5"));
    return option;
}

const QCommandLineOption& jsonOption()
{
    static const QCommandLineOption option(
        QStringLiteral("json"), QStringLiteral("Print one line of JSON in place of the table."));
    return option;
}

int positive(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    const int value = parser.value(option).toInt();
    if (value < 1) {
        throw std::runtime_error(
            "--" + option.names().first().toStdString() + " takes a number of at least 1");
    }
    return value;
}

} // namespace

void CommonOptions::prepare(QCommandLineParser& parser, const char* description)
{
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    parser.addOptions({sizeOption(), runsOption(), jsonOption()});
}

CommonOptions CommonOptions::of(const QCommandLineParser& parser)
{
    return {positive(parser, sizeOption()) * mebibyte, positive(parser, runsOption()),
        parser.isSet(jsonOption())};
}

void CommonOptions::print(const Report& report) const
{
    const QByteArray text = json ? report.json() : report.table().toUtf8();
    std::fputs(text.constData(), stdout);
}

} // namespace bench
