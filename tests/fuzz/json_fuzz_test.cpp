#define LLVMFuzzerTestOneInput fuzzJson
#include "../../fuzz/json_fuzz.cpp"

#include "fuzz/replay.h"

TEST(JsonFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzJson, "json", "{}[]\":,\\-.e0tnu \xFF\xC3");
}
