#define LLVMFuzzerTestOneInput fuzzFittedModel
#include "../../fuzz/fitted_model_fuzz.cpp"

#include "fuzz/replay.h"

TEST(FittedModelFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzFittedModel, "fitted_model", "[]{}\",;\t\r\n-.e0NA\xFF\xC3");
}
