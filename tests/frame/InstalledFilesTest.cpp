// An installed program keeps its shipped files in share/brindlemark beside its bin folder.
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDir>

#include <gtest/gtest.h>

TEST(InstalledFiles, SymbolListIsFoundBesideTheProgramThenInShare) {
    const struct {
        const char* what;
        const char* besideProgram;   // nullptr: no file there
        const char* inShare;
        const char* expectedSymbol;  // nullptr: no entry
    } cases[] = {
        {"installed: only in share", nullptr, "G,FROM.SHARE,Shared\n", "FROM.SHARE"},
        {"beside the program wins", "G,BESIDE,Beside\n", "G,FROM.SHARE,Shared\n", "BESIDE"},
        {"neither", nullptr, nullptr, nullptr},
    };
    for (const auto& c : cases) {
        ScriptedPlatform p;
        const QDir prefix(p.programDir.path());
        ASSERT_TRUE(prefix.mkpath("bin") && prefix.mkpath("share/brindlemark"));
        p.programPath = prefix.filePath("bin");
        if (c.besideProgram)
            writeTextFile(prefix.filePath("bin/symbols.csv"), c.besideProgram);
        if (c.inShare)
            writeTextFile(prefix.filePath("share/brindlemark/symbols.csv"), c.inShare);
        ReadSymbolsFile();
        if (c.expectedSymbol) {
            ASSERT_EQ(sharedState().SymbolCount, 1) << c.what;
            EXPECT_EQ(sharedState().SymbolEntries[1].Symbol, QString::fromLatin1(c.expectedSymbol)) << c.what;
        } else {
            EXPECT_EQ(sharedState().SymbolCount, 0) << c.what;
        }
    }
}
