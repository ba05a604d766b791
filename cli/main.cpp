// The program `tessel`: fitting, scoring and reporting from the command line.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>

#include <tessel/framework/errors.h>

#include "commands.h"
#include "terminal.h"

namespace {

constexpr int kFailure = 1;
constexpr int kUsageError = 2;
constexpr int kInterrupted = 130;  // as shells tell of programs that an interrupt ended

constexpr const char* kExamples = R"(
Examples:
  tessel fit decisionTree iris.csv --target Species --model iris.pmml
  tessel score iris.pmml new.csv --with-input --output scored.csv
  tessel evaluate iris.pmml held_out.csv
  tessel evaluate naiveBayes iris.csv --target Species --validation 0.3
  tessel describe iris.csv

Data are CSV files; - is standard input. Each command has its own --help with more examples.
Exit status: 0 when all is done, 1 for an error (one line on standard error), 2 for a wrong command line,
130 for a fit that Ctrl-C stopped.)";

/// One line, whatever the message holds.
int tell(std::string message, int status) {
    std::replace_if(
        message.begin(), message.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    std::fprintf(stderr, "tessel: %s\n", message.c_str());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    Tessel::Cli::useBinaryStreams();
    CLI::App program{"Data mining and predictive analytics from the command line", "tessel"};
    program.footer(kExamples);
    program.set_version_flag("--version", "tessel " TESSEL_VERSION);
    program.require_subcommand(1);
    Tessel::Cli::addFit(program);
    Tessel::Cli::addScore(program);
    Tessel::Cli::addPosteriors(program);
    Tessel::Cli::addEvaluate(program);
    Tessel::Cli::addDescribe(program);
    Tessel::Cli::addReport(program);
    Tessel::Cli::addConvert(program);
    Tessel::Cli::addSynthesize(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& request) {  // help and version
        return program.exit(request);
    } catch (const CLI::ParseError& error) {
        const auto commands = program.get_subcommands();
        if (commands.empty() && argc > 1 && argv[1][0] != '-')
            return tell("there is no command '" + std::string(argv[1]) + "' (see tessel --help)",
                        kUsageError);
        const std::string help = commands.empty() ? "tessel" : "tessel " + commands.front()->get_name();
        return tell(std::string(error.what()) + " (see " + help + " --help)", kUsageError);
    } catch (const Tessel::FitCancelled&) {
        return tell("interrupted", kInterrupted);
    } catch (const std::bad_alloc&) {
        return tell("there is not enough memory", kFailure);
    } catch (const std::exception& error) {
        return tell(error.what(), kFailure);
    }
    return 0;
}
