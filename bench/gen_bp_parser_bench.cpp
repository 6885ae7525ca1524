// Breakpoint conditions; one iteration is one condition, from its text to its prefix form. The argument of a chain or a
// nest is the number of its tokens.
#include "gen_bp_parser_sys.h"

#include "bench/bench.h"

#include <string>

namespace {

void parse(benchmark::State &state, std::string const &condition)
{
    for (auto _ : state) {
        GEN_BP_PARSER parser;
        std::string text = condition;
        benchmark::DoNotOptimize(parser.parse_string(&text));
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

// Three tokens for each term and one for each operator.
void chain(benchmark::State &state, std::string const &spelled)
{
    std::string condition;
    for (std::int64_t token = 4; token < state.range(0); token += 4)
        condition += "(a)" + spelled;
    parse(state, condition + "(a)");
}

void nest(benchmark::State &state)
{
    auto const depth = static_cast<std::size_t>(state.range(0) / 2);
    parse(state, std::string(depth, '(') + "a" + std::string(depth, ')'));
}

BENCHMARK_CAPTURE(parse, comparison, "a=1")->Name("condition/comparison");
BENCHMARK_CAPTURE(parse, two_terms, "(top|core|state[3:0]=1010)&&(time>100ns)")->Name("condition/two_terms");
BENCHMARK_CAPTURE(parse, six_terms,
                  "((|top|cpu|pc[31:0]=00001000)||(|top|cpu|pc[31:0]>00002000))&&~(|top|cpu|stall=1)&&"
                  "((|top|bus|req=1)||(|top|bus|gnt=0))&&(time>5us)")
    ->Name("condition/six_terms");
BENCHMARK_CAPTURE(chain, or, "||")->Name("chain/or")->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(chain, and, "&&")->Name("chain/and")->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(chain, less, "<")->Name("chain/less")->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(nest)->Name("nest")->Arg(1000)->Arg(10000)->Arg(100000);

// Ten times the tokens should take ten times the time; the goal allows 30% more.
BenchGoals const GOALS{
    {"chain of ||, 10,000 tokens / 1,000 tokens", "chain/or/10000", "chain/or/1000", 13},
    {"chain of &&, 10,000 tokens / 1,000 tokens", "chain/and/10000", "chain/and/1000", 13},
};

} // namespace
