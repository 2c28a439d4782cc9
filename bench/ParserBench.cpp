// Parser::parse over a generated 1 MB definition file.
//
// ParseToFile sends the per-element trace lines to a file, as the game's log
// does; every trace line is flushed, so it costs one write call per element.
// ParseQuiet sends them to a buffer that drops them, which leaves the cost of
// the parser and tree alone.

#include "parser/Parser.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

namespace {

// Shaped like the engine's own files: groups of short numeric and text
// values, a few levels deep, indented with tabs.
std::string generateDefinitions(std::size_t bytes)
{
    std::string text;
    int index = 0;
    while (text.size() < bytes) {
        const std::string n = std::to_string(index++);
        text += "<Object>\n";
        text += "\t<Name>asteroid_" + n + "</Name>\n";
        text += "\t<Model>rock" + std::to_string(index % 7) + ".obj</Model>\n";
        text += "\t<Position>\n\t\t<X>" + n + ".25</X>\n\t\t<Y>-" + n + ".5</Y>\n\t\t<Z>12.75</Z>\n\t</Position>\n";
        text += "\t<Radius>" + std::to_string(1 + index % 9) + ".5</Radius>\n";
        text += "\t<Blended>0</Blended>\n";
        text += "</Object>\n";
    }
    return text;
}

const std::string& definitions()
{
    static const std::string text = generateDefinitions(1024 * 1024);
    return text;
}

std::size_t countElements(const korvel::BaseParserElement& element)
{
    std::size_t count = element.getAttributes().size();
    for (const korvel::BaseParserElement* child : element.getAttributes()) {
        count += countElements(*child);
    }
    return count;
}

void parseWithTraceTo(benchmark::State& state, std::streambuf* trace)
{
    const std::string& text = definitions();
    std::streambuf* old = std::cout.rdbuf(trace);
    std::size_t elements = 0;
    for (auto _ : state) {
        korvel::Parser parser;
        if (!parser.parse(text)) {
            state.SkipWithError("generated file did not parse");
            break;
        }
        elements = countElements(*parser.getModule());
        benchmark::DoNotOptimize(parser.getModule());
    }
    std::cout.rdbuf(old);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.counters["elements"] = static_cast<double>(elements);
    state.counters["elements/s"] =
        benchmark::Counter(static_cast<double>(elements), benchmark::Counter::kIsIterationInvariantRate);
}

void ParseToFile(benchmark::State& state)
{
    const char* path = "ParserBench-trace.log";
    {
        std::ofstream log(path, std::ios::trunc);
        parseWithTraceTo(state, log.rdbuf());
    }
    std::remove(path);
}

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

void ParseQuiet(benchmark::State& state)
{
    NullBuffer null;
    parseWithTraceTo(state, &null);
}

BENCHMARK(ParseToFile)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseQuiet)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
