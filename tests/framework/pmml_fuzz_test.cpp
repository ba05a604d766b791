#define LLVMFuzzerTestOneInput fuzzPmml
#include "../../fuzz/pmml_fuzz.cpp"

#include "fuzz/replay.h"

// Here and not among the other fuzz targets, because documents are no part of the public interface.
TEST(PmmlFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzPmml, "pmml", "<>/=\"'&;#!?-[] \n0.\xFF\xC4");
}
