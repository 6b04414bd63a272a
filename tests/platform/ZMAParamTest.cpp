// The lens table: its file format, refusals with line numbers, and the focus
// position that the algorithm gives for a zoom position.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "TestRoot.h"
#include "platform/CameraLensZMAAlgorithm.h"
#include "platform/ZMAParamFileToArray.h"

using namespace testutil;

TEST(ZMAParamFile, ReadsRowsWithCommentsBlanksAndHex) {
    TempRoot root;
    root.write("/hd1/program/config/ZMAParam.txt",
               "# zoom   focus\n\n0x0000 0x1000   # wide\n  8192\t9000\r\n0x4000 0x3000\n");
    ZMAParamFileToArray f;
    ASSERT_TRUE(f.setFilePath("/hd1/program/config/ZMAParam.txt"));
    std::vector<ZMAParam> rows;
    ASSERT_TRUE(f.get(rows)) << f.getError();
    ASSERT_EQ(3u, rows.size());
    EXPECT_EQ(ZMAParam(0, 0x1000), rows[0]);
    EXPECT_EQ(ZMAParam(8192, 9000), rows[1]);
    EXPECT_EQ(ZMAParam(0x4000, 0x3000), rows[2]);
}

TEST(ZMAParamFile, RefusalsNameTheLine) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"0 100\n10\n", "ZMAParam line 2: expected two numbers (zoom focus), found 1 words"},
        {"0 100 7\n", "ZMAParam line 1: expected two numbers (zoom focus), found 3 words"},
        {"# c\n0 x1\n", "ZMAParam line 2: focus 'x1' is not a number"},
        {"-5 100\n", "ZMAParam line 1: zoom '-5' is not a number"},
        {"0 100\n70000 5\n", "ZMAParam line 2: zoom 70000 is above 65535"},
        {"0 100\n5 0x10000\n", "ZMAParam line 2: focus 0x10000 is above 65535"},
        {"10 100\n10 200\n", "ZMAParam line 2: zoom 10 is not above the previous row's zoom"},
        {"# nothing\n\n", "ZMAParam: the table has no rows"},
    };
    for (const Case& c : cases) {
        ZMAParamFileToArray f;
        std::vector<ZMAParam> rows{ZMAParam(1, 2)};
        EXPECT_FALSE(f.parse(c.text, rows)) << c.text;
        EXPECT_EQ(c.error, f.getError());
        ASSERT_EQ(1u, rows.size());  // left as it was
    }
}

TEST(ZMAParamFile, MissingFileAndEmptyPath) {
    TempRoot root;
    ZMAParamFileToArray f;
    EXPECT_FALSE(f.setFilePath(""));
    std::vector<ZMAParam> rows;
    EXPECT_FALSE(f.get(rows));
    EXPECT_EQ("ZMAParam: no file path set", f.getError());
    ASSERT_TRUE(f.setFilePath("/hd1/program/config/ZMAParam.txt"));
    EXPECT_FALSE(f.get(rows));
    EXPECT_EQ("ZMAParam: cannot open /hd1/program/config/ZMAParam.txt", f.getError());
}

TEST(ZMAParamFile, SampleFileOfTheSimulatorCameraIsValid) {
    ZMAParamFileToArray f;
    std::string text;
    {
        std::ifstream in(std::string(SENSORCTL_SOURCE_DIR) + "/sim/camroot/hd1/program/config/ZMAParam.txt");
        std::stringstream ss;
        ss << in.rdbuf();
        text = ss.str();
    }
    std::vector<ZMAParam> rows;
    ASSERT_TRUE(f.parse(text, rows)) << f.getError();
    EXPECT_GE(rows.size(), 5u);
    CameraLensZMAAlgorithm a;
    EXPECT_TRUE(a.setZMAParam(rows));
}

TEST(CameraLensZMAAlgorithm, InterpolatesBetweenRowsAndHoldsTheEnds) {
    CameraLensZMAAlgorithm a;
    int focus = -1;
    EXPECT_FALSE(a.getFocusForZoom(100, focus));
    EXPECT_FALSE(a.setZMAParam({}));
    EXPECT_FALSE(a.setZMAParam({ZMAParam(10, 1), ZMAParam(10, 2)}));
    ASSERT_TRUE(a.setZMAParam({ZMAParam(1000, 4000), ZMAParam(2000, 6000), ZMAParam(4000, 5000)}));
    ASSERT_TRUE(a.getFocusForZoom(1500, focus));
    EXPECT_EQ(5000, focus);
    ASSERT_TRUE(a.getFocusForZoom(3000, focus));
    EXPECT_EQ(5500, focus);
    ASSERT_TRUE(a.getFocusForZoom(2001, focus));
    EXPECT_EQ(5999, focus);  // 5999.5: a half step rounds away from zero
    ASSERT_TRUE(a.getFocusForZoom(2000, focus));
    EXPECT_EQ(6000, focus);
    ASSERT_TRUE(a.getFocusForZoom(0, focus));
    EXPECT_EQ(4000, focus);
    ASSERT_TRUE(a.getFocusForZoom(65535, focus));
    EXPECT_EQ(5000, focus);
}
