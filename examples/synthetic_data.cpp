// Learns the numeric columns of a table, generates one that looks like it, and tells how much alike they are.
// usage: example_synthetic_data [FILE.csv [NUM_ROWS]]

#include <exception>
#include <iostream>

#include <tessel/tessel.h>

using namespace Tessel;

namespace {

void print(const WString& text) { std::cout << Convert::toUtf8(text) << '\n'; }

DataFrame numericColumns(const DataFrame& table) {
    IntVector columns;
    for (int column = 0; column < table.getNumCols(); ++column)
        if (table.isNumeric(column)) columns.push_back(column);
    return table(Util::all, columns);
}

void run(const WString& path, int numRows) {
    DataFrame table = numericColumns(Reader::readText(path));
    table.setName(L"Measurements");

    SyntheticDataGenerator generator;
    generator.setSampleSize(numRows).setRandomSeed(12345);
    for (const WString& column : table.getColNames()) generator.setNumMetalogTerms(column, 9);
    const DataFrame sample = generator.fitTransform(table);
    print(generator.getBestMetalog().toString());
    print(sample.toString(5));
    for (const WString& line : generator.getLog()) print(line);

    const DataFrameVector quality = SyntheticDataGenerator::qualityReport(table, sample);
    print(quality[L"Quality: Summary"].toString());
    print(quality[L"Quality: Moments"].toString());
    print(quality[L"Rank Correlation: Difference"].toString());

    // The same rows again, from the text of what was learned.
    SyntheticDataGenerator restored;
    restored.fromLadonString(generator.toLadon());
    print(restored.generate().toJson() == sample.toJson() ? L"The text generates the same rows."
                                                          : L"The text generates other rows.");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(Convert::fromUtf8(argc > 1 ? argv[1] : "examples/data/iris.csv"),
            argc > 2 ? Convert::toInt(Convert::fromUtf8(argv[2])) : 1000);
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << '\n';
        return 1;
    }
}
