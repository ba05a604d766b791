#include <memory>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "models.h"
#include "output.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

constexpr const char* kReportExamples = R"(
Examples:
  tessel report iris.pmml
  tessel report iris.pmml --table "Feature Importance" --format csv
  tessel report iris.pmml --format json --output report.json)";

constexpr const char* kConvertExamples = R"(
Examples:
  tessel convert iris.pmml iris.json
  tessel convert iris.json iris.ladon
  cat iris.ladon | tessel convert - --as pmml > iris.pmml)";

struct ReportOptions {
    std::string model;
    OutputOptions output;
};

struct ConvertOptions {
    std::string model, result, as;
};

void convert(const ConvertOptions& options) {
    if (options.result.empty() && options.as.empty())
        throw Failure("the new format is needed: name a file, or give --as pmml, json or ladon");
    const std::string format = modelFormat(options.result, options.as);
    writeBytes(Convert::toUtf8(modelText(loadModel(options.model), format)), options.result);
}

}  // namespace

void addReport(CLI::App& program) {
    const auto options = std::make_shared<ReportOptions>();
    CLI::App& command = *program.add_subcommand("report", "Print the report tables of a model");
    command.footer(kReportExamples);
    command.add_option("MODEL", options->model, "A PMML, JSON or Ladon file, or -")
        ->required()
        ->type_name("");
    addOutputOptions(command, options->output, true);
    command.callback(
        [options] { printReport(loadModel(options->model).toDataFrameVector(), options->output); });
}

void addConvert(CLI::App& program) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App& command = *program.add_subcommand("convert", "Write a model in another format");
    command.footer(kConvertExamples);
    command.add_option("MODEL", options->model, "A PMML, JSON or Ladon file, or -")
        ->required()
        ->type_name("");
    command
        .add_option("RESULT", options->result,
                    "The new file, its format told by the ending .pmml, .xml, .json or .ladon; "
                    "standard output unless given")
        ->type_name("");
    command.add_option("--as", options->as, "The new format: pmml, json or ladon")
        ->check(CLI::IsMember({"pmml", "json", "ladon"}).description(""))
        ->type_name("FORMAT");
    command.callback([options] { convert(*options); });
}

}  // namespace Tessel::Cli
