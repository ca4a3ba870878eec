#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CQVRModuleManager.h"

namespace {

struct TokenCase {
    const char* text;
    char delimiter;
    std::vector<std::string> tokens;
};

class TokenizerTest : public ::testing::TestWithParam<TokenCase> {};

TEST_P(TokenizerTest, SplitsAndRemovesEverySpace) {
    std::vector<std::string> tokens;
    Tokenizer(GetParam().text, tokens, GetParam().delimiter);
    EXPECT_EQ(tokens, GetParam().tokens) << "text: '" << GetParam().text << "'";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TokenizerTest,
    ::testing::Values(TokenCase{"", ',', {}}, TokenCase{"a", ',', {"a"}}, TokenCase{"a,b", ',', {"a", "b"}},
                      TokenCase{"a,,b", ',', {"a", "", "b"}}, TokenCase{"a,", ',', {"a"}},
                      TokenCase{"a,,", ',', {"a", ""}}, TokenCase{",a", ',', {"", "a"}},
                      TokenCase{",", ',', {""}}, TokenCase{" F R M W , B I O S ", ',', {"FRMW", "BIOS"}},
                      TokenCase{"a, ", ',', {"a", ""}}, TokenCase{"a\t,b", ',', {"a\t", "b"}},
                      TokenCase{"a;b,c", ';', {"a", "b,c"}}));

TEST(Tokenizer, AppendsToWhatIsThere) {
    std::vector<std::string> tokens = {"x"};
    Tokenizer("y", tokens, ',');
    EXPECT_EQ(tokens, (std::vector<std::string>{"x", "y"}));
}

}  // namespace
