#pragma once

namespace CLI {
class App;
}

// The sub-commands. Each function declares one with its options and what it does; it runs when the command
// line was read.

namespace Tessel::Cli {

void addFit(CLI::App& program);
void addScore(CLI::App& program);
void addPosteriors(CLI::App& program);
void addEvaluate(CLI::App& program);
void addDescribe(CLI::App& program);
void addReport(CLI::App& program);
void addConvert(CLI::App& program);
void addSynthesize(CLI::App& program);

}  // namespace Tessel::Cli
