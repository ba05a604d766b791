#define LLVMFuzzerTestOneInput fuzzGenerator
#include "../../fuzz/generator_fuzz.cpp"

#include "fuzz/replay.h"

TEST(GeneratorFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzGenerator, "generator", "\"{}[]:,-.e0123456789NaI \xC3");
}
