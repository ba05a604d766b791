#include <memory>
#include <optional>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "data.h"
#include "output.h"
#include "pictures.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

using Generator = SyntheticDataGenerator;

struct Options {
    DataOptions data;  // its path may be that of a generator
    std::vector<std::string> ignored;
    OutputOptions output;
    int size = 100;
    std::optional<int> seed;
    std::string correlation;  // empty: rank, or copula when one is named
    std::vector<std::string> copulas;
    std::string sampling;         // empty: that of the generator
    std::optional<int> numTerms;  // 5 unless given
    bool withinRange = false;
    std::string model;
    OutputOptions report;
    std::string pictures;
};

constexpr const char* kExamples = R"(
Examples:
  A thousand rows like those of a table, its column of names left out:
    tessel synthesize iris.csv --ignore Species --size 1000 --output like_iris.csv
  No value outside the range of its column; the dependence by the copula that can be fitted first:
    tessel synthesize iris.csv --ignore Species --within-range --copula gauss,student
  How much alike both are, in numbers and in pictures:
    tessel synthesize iris.csv --ignore Species --output like_iris.csv --report alike.txt --pictures margins.svg
  What was learned, kept for later:
    tessel synthesize iris.csv --ignore Species --model iris.ladon --output a.csv
    tessel synthesize iris.ladon --size 20 --seed 7

The columns of the data are numbers. The distribution of each and the dependence between them are learned.)";

const std::map<std::string, Generator::CorrelationType> kCorrelations{
    {"none", Generator::CorrelationType::NONE},
    {"rank", Generator::CorrelationType::RANK},
    {"copula", Generator::CorrelationType::COPULA}};
const std::map<std::string, Generator::CopulaType> kCopulas{{"clayton", Generator::CopulaType::CLAYTON},
                                                            {"frank", Generator::CopulaType::FRANK},
                                                            {"gumbel", Generator::CopulaType::GUMBEL},
                                                            {"gauss", Generator::CopulaType::GAUSS},
                                                            {"student", Generator::CopulaType::STUDENT}};
const std::map<std::string, Generator::SamplingMethodType> kSamplings{
    {"monteCarlo", Generator::SamplingMethodType::MONTE_CARLO},
    {"latinHypercube", Generator::SamplingMethodType::LATIN_HYPERCUBE},
    {"sobol", Generator::SamplingMethodType::SOBOL_RQMC}};

/// What a generator learned; it tells nothing by errors, but by its log.
void requireFitted(const Generator& generator, const std::string& source) {
    const bool hasDependence = generator.getCorrelationType() == Generator::CorrelationType::NONE ||
                               generator.getColNames().size() < 2 || generator.isCorrelationFitted();
    if (generator.isMetalogFitted() && hasDependence) return;
    throw Failure(source + ": cannot be learned from. " +
                  Convert::toUtf8(Util::join(generator.getLog(), L"; ")));
}

/// @returns the columns that were learned from
DataFrame learn(Generator& generator, const Options& options) {
    const std::string source = sourceName(options.data.path);
    const DataFrame table = DataSource(options.data).read();
    StringVector columns;
    const StringVector ignored = toStringVector(options.ignored);
    for (const WString& column : ignored)
        if (!table.isColumn(column))
            throw Failure(source + ": there is no column '" + Convert::toUtf8(column) + "'");
    for (const WString& column : table.getColNames()) {
        if (ignored.exists(column) || table.isIndexColumn(column)) continue;
        if (!table.isNumeric(column))
            throw Failure(source + ": column '" + Convert::toUtf8(column) +
                          "' has texts, which are not generated; leave it out with --ignore");
        columns.push_back(column);
    }
    if (columns.empty()) throw Failure(source + ": there is no column of numbers");
    if (!options.correlation.empty())
        generator.setCorrelationType(kCorrelations.at(options.correlation));
    else if (!options.copulas.empty())
        generator.setCorrelationType(Generator::CorrelationType::COPULA);
    if (!options.copulas.empty() && generator.getCorrelationType() != Generator::CorrelationType::COPULA)
        throw Failure("--copula is for --correlation copula");
    for (const std::string& copula : options.copulas) generator.setCopula(kCopulas.at(copula), true);
    generator.setUseMinMaxAsBounds(options.withinRange);
    for (const WString& column : columns) generator.setNumMetalogTerms(column, options.numTerms.value_or(5));
    const Progress progress("learning from " + std::to_string(table.getNumRows()) + " rows");
    DataFrame learned = table(Util::all, columns);
    generator.fit(learned);
    requireFitted(generator, source);
    return learned;
}

void synthesize(const Options& options) {
    Generator generator;
    DataFrame data;
    if (options.data.path.ends_with(".ladon")) {
        if (!options.correlation.empty() || !options.copulas.empty() || !options.ignored.empty() ||
            options.withinRange || options.numTerms)
            throw Failure(options.data.path + ": is a generator, which has learned already");
        if (!options.report.path.empty() || !options.pictures.empty())
            throw Failure(options.data.path + ": is a generator; a report and pictures need the data");
        try {
            generator.fromLadonString(Convert::fromUtf8(readAll(options.data.path)));
        } catch (const UnsupportedJSONModel& error) {
            throw Failure(options.data.path + ": is no generator. " + error.what());
        }
        requireFitted(generator, options.data.path);
    } else {
        data = learn(generator, options);
    }
    generator.setSampleSize(options.size);
    if (!options.sampling.empty()) generator.setSamplingMethodType(kSamplings.at(options.sampling));
    if (options.seed) generator.setRandomSeed(*options.seed);
    if (!options.model.empty()) writeBytes(Convert::toUtf8(generator.toLadon()), options.model);

    const Progress progress("generating " + std::to_string(options.size) + " rows");
    const DataFrame sample = generator.generate();
    if (sample.getNumRows() != options.size)
        throw Failure("nothing can be generated. " + Convert::toUtf8(Util::join(generator.getLog(), L"; ")));
    if (!options.report.path.empty()) printReport(Generator::qualityReport(data, sample), options.report);
    if (!options.pictures.empty()) writeBytes(picturesOfMargins(data, generator), options.pictures);
    printData(sample, options.output);
}

template <class Value>
CLI::Validator oneOf(const std::map<std::string, Value>& names) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : names) texts.push_back(name);
    return CLI::IsMember(texts).description("");
}

}  // namespace

void addSynthesize(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *program.add_subcommand("synthesize", "Generate rows like those of a table");
    command.footer(kExamples);
    command
        .add_option("DATA", options->data.path,
                    "A CSV file, - for standard input, or a generator that was kept, ending with .ladon")
        ->required()
        ->type_name("");
    command.add_option("--size", options->size, "The number of rows to generate")
        ->capture_default_str()
        ->type_name("NUMBER");
    command.add_option("--seed", options->seed, "Seed of the random numbers; 0")->type_name("NUMBER");
    command
        .add_option("--sampling", options->sampling,
                    "monteCarlo, latinHypercube or sobol; latinHypercube unless given")
        ->check(oneOf(kSamplings))
        ->type_name("METHOD");
    command
        .add_option("--correlation", options->correlation,
                    "How the dependence is learned: none, rank or copula; rank unless given")
        ->check(oneOf(kCorrelations))
        ->type_name("KIND");
    command
        .add_option("--copula", options->copulas,
                    "The copulas to try, first one first: clayton, frank, gumbel, gauss, student")
        ->check(oneOf(kCopulas))
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("COPULAS");
    command
        .add_option(
            "--terms", options->numTerms,
            "The most terms of a distribution, 2 to 16: more follow the data more closely; 5 unless given")
        ->check(CLI::Range(2, 16).description(""))
        ->type_name("NUMBER");
    command.add_flag("--within-range", options->withinRange,
                     "No values below the least and above the greatest of their column, at the price of a "
                     "looser fit");
    command.add_option("--ignore", options->ignored, "Columns to leave out")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("COLUMNS");
    command.add_option("--model", options->model, "A file, ending with .ladon, for what was learned")
        ->check(CLI::Validator(
            [](const std::string& path) {
                return path.ends_with(".ladon") ? std::string() : "the name must end with .ladon";
            },
            ""))
        ->type_name("FILE");
    command
        .add_option("--report", options->report.path,
                    "A file for how much alike data and rows are: .txt, or .json for programs")
        ->type_name("FILE");
    command
        .add_option("--pictures", options->pictures,
                    "An SVG file for the histograms of the columns under their fitted densities")
        ->type_name("FILE");
    addOutputOptions(command, options->output, false);
    addDataOptions(command, options->data);
    command.callback([options] { synthesize(*options); });
}

}  // namespace Tessel::Cli
