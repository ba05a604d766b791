#define LLVMFuzzerTestOneInput fuzzReader
#include "../../fuzz/reader_fuzz.cpp"

#include "fuzz/replay.h"

TEST(ReaderFuzz, SurvivesTheCorpusAndItsMutations) {
    Tessel::Testing::replay(fuzzReader, "reader", "\",;\t\r\n-.e0NA\xFF\xC3");
}
