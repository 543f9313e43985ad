// Words for the shell: whatever a name holds, the shell sees one word of exactly these bytes.
#include "support/shell.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <string>

#include "harness/files.h"
#include "support/owned.h"

namespace {

TEST(ShellWord, LeavesOrdinaryNamesAsTheyAre) {
    for (const char* name : {"ksmac_1.6.5", "/home/a-b/Library", "a+b,c:d@e%f=g"}) {
        EXPECT_STREQ(velnor::OwnedText(velnor::shellWord(name)).get(), name);
    }
}

TEST(ShellWord, KeepsAnythingElseOneWord) {
    for (const char* name : {"", " ", "a b", "a;touch /tmp/owned", "$(touch /tmp/owned)", "`id`",
                             "it's", "'", "''", "a\nb", "*", "~", "\"", "\\", "a>b&", "\xc3\xa9"}) {
        const velnor::OwnedText word(velnor::shellWord(name));
        const int status = velnor::runShell("printf '[%%s]' %s x > /tmp/words", word.get());
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << name;
        EXPECT_EQ(harness::readFile("/tmp/words"), "[" + std::string(name) + "][x]");
    }
    EXPECT_FALSE(harness::exists("/tmp/owned"));
}

}  // namespace
