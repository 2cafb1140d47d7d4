#include "platform/linux/ShellAssignments.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(ShellAssignmentsTest, TakesOffQuotesAndEscapes)
{
    struct Case {
        const char* value;
        const char* expected; ///< null when it must be refused
    };
    for (const Case& c : {
             Case{R"()", ""},
             Case{R"(plain)", "plain"},
             Case{R"("two words")", "two words"},
             Case{R"('two words')", "two words"},
             Case{R"("")", ""},
             Case{R"(''"")", ""},
             Case{R"("a"'b'c)", "abc"},
             Case{R"("it's")", "it's"},
             Case{R"('say "hi"')", R"(say "hi")"},
             Case{R"("say \"hi\"")", R"(say "hi")"},
             Case{R"("\\ \$HOME \`x\`")", R"(\ $HOME `x`)"},
             Case{R"("a\nb")", R"(a\nb)"},
             Case{R"('a\b')", R"(a\b)"},
             Case{R"('a\')", R"(a\)"},
             Case{R"(a\ b\"c)", R"(a b"c)"},
             Case{R"("$HOME/x")", "$HOME/x"},
             Case{R"("open)", nullptr},
             Case{R"('open)", nullptr},
             Case{R"("open\")", nullptr},
             Case{R"(open\)", nullptr},
             Case{R"(it's)", nullptr},
         }) {
        const auto expected = c.expected ? std::optional<QByteArray>(c.expected) : std::nullopt;
        EXPECT_EQ(unquoted(c.value), expected) << c.value;
    }
}

} // namespace
} // namespace platform
