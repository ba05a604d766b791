#define LLVMFuzzerTestOneInput fuzzExpression
#include "../../fuzz/expression_fuzz.cpp"

#include "fuzz/replay.h"

TEST(ExpressionFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzExpression, "expression", "()[]+-*/^<>=!&|?:,.e0 _\xFF");
}
