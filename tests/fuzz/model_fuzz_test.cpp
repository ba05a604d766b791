#define LLVMFuzzerTestOneInput fuzzModel
#include "../../fuzz/model_fuzz.cpp"

#include "fuzz/replay.h"

TEST(ModelFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzModel, "model", "<>\"/=&;{}[]:,-.e0NaI \xC3");
}
