#include "host/ResultTexts.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(ResultTexts, EveryCodeHasASentenceOfItsOwn) {
    std::set<std::string> texts;
    const Result codes[] = {RESULT_OK,
                            RESULT_FAILED,
                            RESULT_NO_MEMORY,
                            RESULT_NOT_FOUND,
                            RESULT_BAD_ARGUMENT,
                            RESULT_NOT_SUPPORTED,
                            RESULT_BAD_EXTENSION,
                            RESULT_NOT_OPEN,
                            RESULT_CANNOT_OPEN,
                            RESULT_NOT_PCM,
                            RESULT_NOT_WAVE,
                            RESULT_WRITE_FAILED,
                            RESULT_CANNOT_CREATE,
                            RESULT_FILE_IN_USE,
                            RESULT_SOURCE_NOT_LOADED,
                            RESULT_FILTER_MISSING,
                            RESULT_CANNOT_RUN};
    for (const Result code : codes) {
        EXPECT_EQ(ResultText(code).find("unknown"), std::string::npos) << code;
        texts.insert(ResultText(code));
    }
    EXPECT_EQ(texts.size(), std::size(codes));
}

TEST(ResultTexts, CodesOfOthersAreToldByTheirNumber) {
    EXPECT_NE(ResultText(static_cast<Result>(0x80004005)).find("0x80004005"), std::string::npos);
    EXPECT_NE(ResultText(777).find("777"), std::string::npos);
}

}  // namespace
