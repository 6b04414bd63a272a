#include <gtest/gtest.h>

#include <climits>

#include "isp/EE.h"

TEST(EETest, AcceptsEveryLevel) {
    EE objEE;
    for (int nLevel : {INT_MIN, -100, -2, -1, 0, 1, 50, 100, 255, INT_MAX}) {
        EXPECT_TRUE(objEE.setEE(nLevel)) << nLevel;
    }
    EE* pEE = new EE();
    EXPECT_TRUE(pEE->setEE(3));
    delete pEE;
}
