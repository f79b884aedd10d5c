#include "frame/CommonRoutines.h"
#include "frame/Regional.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

TEST(DateToTextSmoke, WorkedExamples) {
    ScriptedPlatform p;
    {
        LocaleGuard l("en_GB");
        EXPECT_EQ(DateToText(20050806), "06/08/2005");
    }
}
