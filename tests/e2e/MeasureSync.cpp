// Measures how well the player keeps picture and sound together, with the strict figures, for use
// at a quiet machine:
//
//     measure_sync [--seconds N] [--repeat N] [case]
//
// prints a line a film and exits with 1 when one of them leaves the strict bounds.

#include "tests/e2e/SyncRun.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr double kStrictMedianMs = 8;
constexpr double kStrictWorstMs = 25;
constexpr double kNoteworthyMs = 12;

struct Options {
    int seconds = 15;
    int repeat = 1;
    std::string only;
};

bool Measure(const kelvo::test::Stage& stage, kelvo::test::CodedFilmPlan plan,
             const Options& options) {
    plan.seconds = options.seconds;
    bool good = true;
    for (int turn = 0; turn < options.repeat; ++turn) {
        kelvo::test::SyncRun run(stage, plan);
        if (!run.Problem().empty() || !run.WaitForEnd()) {
            std::printf("%s: not played to its end. %s\n", plan.Name().c_str(),
                        run.Problem().c_str());
            return false;
        }
        const kelvo::test::Agreement agreement = run.Finish();
        const bool strict = std::abs(agreement.Median()) <= kStrictMedianMs &&
                            agreement.Worst() <= kStrictWorstMs && agreement.missed == 0;
        std::printf("%s %s: %s\n", strict ? "good" : "BAD ", plan.Name().c_str(),
                    agreement.Text().c_str());
        std::fflush(stdout);
        const std::string outside = agreement.Outside(kNoteworthyMs);
        if (!outside.empty())
            std::printf("     outside %.0f ms:%s\n", kNoteworthyMs, outside.c_str());
        if (agreement.unmatched > 0) {
            std::printf("     heard:");
            for (const auto& frame : run.Heard()) {
                std::printf(" %d", frame.code);
            }
            std::printf("\n");
        }
        good = good && strict;
    }
    return good;
}

} // namespace

int main(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const bool has_value = i + 1 < count;
        if (std::strcmp(arguments[i], "--seconds") == 0 && has_value) {
            options.seconds = std::max(1, std::atoi(arguments[++i]));
        } else if (std::strcmp(arguments[i], "--repeat") == 0 && has_value) {
            options.repeat = std::max(1, std::atoi(arguments[++i]));
        } else {
            options.only = arguments[i];
        }
    }
    const kelvo::test::Stage stage;
    if (!stage.Problem().empty()) {
        std::fprintf(stderr, "measure_sync: %s\n", stage.Problem().c_str());
        return 2;
    }
    bool good = true;
    for (const auto& plan : kelvo::test::SyncPlans()) {
        if (!options.only.empty() && plan.Name().find(options.only) == std::string::npos) continue;
        good = Measure(stage, plan, options) && good;
    }
    return good ? 0 : 1;
}
