// Parser::parse over a generated 1 MB definition file.
//
// ParseToFile sends the per-element trace lines to a file, as the game's log
// does; every trace line is flushed, so it costs one write call per element.
// ParseQuiet sends them to a buffer that drops them, which leaves the cost of
// the parser and tree alone. TraceOnly writes the same trace lines to a file
// with nothing else: the floor that the flushed trace puts under parsing.

#include "parser/Parser.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

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

class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

std::size_t countElements(const korvel::BaseParserElement& element)
{
    std::size_t count = element.getAttributes().size();
    for (const korvel::BaseParserElement* child : element.getAttributes()) {
        count += countElements(*child);
    }
    return count;
}

void collectNames(const korvel::BaseParserElement& element, std::vector<std::string>& names)
{
    for (const korvel::BaseParserElement* child : element.getAttributes()) {
        names.push_back(child->getName());
        collectNames(*child, names);
    }
}

void parseWithTraceTo(benchmark::State& state, std::streambuf* trace)
{
    const std::string& text = definitions();
    std::streambuf* old = std::cout.rdbuf(trace);
    std::size_t elements = 0;
    {
        korvel::Parser parser;
        if (!parser.parse(text)) {
            std::cout.rdbuf(old);
            state.SkipWithError("generated file did not parse");
            return;
        }
        elements = countElements(*parser.getModule());
    }
    for (auto _ : state) {
        korvel::Parser parser;
        parser.parse(text);
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

void ParseQuiet(benchmark::State& state)
{
    NullBuffer null;
    parseWithTraceTo(state, &null);
}

void TraceOnly(benchmark::State& state)
{
    const std::string& text = definitions();
    std::vector<std::string> names;
    {
        NullBuffer null;
        std::streambuf* old = std::cout.rdbuf(&null);
        korvel::Parser parser;
        parser.parse(text);
        std::cout.rdbuf(old);
        collectNames(*parser.getModule(), names);
    }
    const char* path = "ParserBench-trace.log";
    {
        std::ofstream log(path, std::ios::trunc);
        for (auto _ : state) {
            for (const std::string& name : names) {
                log << "[Information] tag being parsed: " << name << std::endl;
            }
        }
    }
    std::remove(path);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.counters["lines"] = static_cast<double>(names.size());
}

BENCHMARK(ParseToFile)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseQuiet)->Unit(benchmark::kMillisecond);
BENCHMARK(TraceOnly)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
