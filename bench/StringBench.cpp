// What the string costs beside std::string, and a copy of it beside the atomic increment it consists of.

#include "bench/Repeated.h"

#include "KesraNTC/base/CString.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace
{

constexpr std::size_t TextLength = 1024;

/// 1 KiB of words whose letters also begin what is looked for, with the wanted word at the end alone.
std::string MakeText()
{
    std::string text;
    while (text.size() < TextLength)
        text += "the quick brown fox jumps ";
    text.resize(TextLength - 6);
    return text + "target";
}

void BareIncrement(benchmark::State& state)
{
    std::atomic<std::int32_t> count{1};
    for (auto _ : state)
        benchmark::DoNotOptimize(count.fetch_add(1, std::memory_order_relaxed));
}

/// The copies are destroyed outside the measured time.
void Copy(benchmark::State& state)
{
    constexpr int Batch = 1024;
    const CString text("the text that is shared");
    alignas(CString) unsigned char room[Batch][sizeof(CString)];
    int made = 0;
    const auto destroy = [&] {
        while (made > 0)
            reinterpret_cast<CString*>(room[--made])->~CString();
    };
    for (auto _ : state) {
        benchmark::DoNotOptimize(new (room[made++]) CString(text));
        if (made == Batch) {
            state.PauseTiming();
            destroy();
            state.ResumeTiming();
        }
    }
    destroy();
}

void BareIncrementAndDecrement(benchmark::State& state)
{
    std::atomic<std::int32_t> count{1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(count.fetch_add(1, std::memory_order_relaxed));
        benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
    }
}

void CopyAndDestroy(benchmark::State& state)
{
    const CString text("the text that is shared");
    for (auto _ : state) {
        CString copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

/// A line put together from 64 short texts.
template <typename String> void Append(benchmark::State& state)
{
    for (auto _ : state) {
        String text;
        for (int i = 0; i < 64; ++i)
            text += "word of 16 bytes";
        benchmark::DoNotOptimize(text);
    }
}

void FindCharacter(benchmark::State& state)
{
    const CString text(MakeText().c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(text.Find('g'));
}

void FindCharacterStd(benchmark::State& state)
{
    const std::string text = MakeText();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find('g'));
}

void FindText(benchmark::State& state)
{
    const CString text(MakeText().c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(text.Find("target"));
}

void FindTextStd(benchmark::State& state)
{
    const std::string text = MakeText();
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find("target"));
}

/// The usual loop over find and replace.
std::size_t ReplaceAll(std::string& text, const char* wanted, const char* instead)
{
    const std::size_t wantedLength = std::char_traits<char>::length(wanted);
    const std::size_t insteadLength = std::char_traits<char>::length(instead);
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(wanted, at)) != std::string::npos; at += insteadLength, ++count)
        text.replace(at, wantedLength, instead);
    return count;
}

/// There and back again, so that every round does the same work.
template <typename String, typename Replace>
void ReplaceThereAndBack(benchmark::State& state, const char* one, const char* other, Replace replace)
{
    String text(MakeText().c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(replace(text, one, other));
        benchmark::DoNotOptimize(replace(text, other, one));
    }
}

void ReplaceSame(benchmark::State& state)
{
    ReplaceThereAndBack<CString>(
        state, "fox", "cat",
        [](CString& text, const char* one, const char* other) { return text.Replace(one, other); });
}

void ReplaceSameStd(benchmark::State& state)
{
    ReplaceThereAndBack<std::string>(state, "fox", "cat", ReplaceAll);
}

void ReplaceLonger(benchmark::State& state)
{
    ReplaceThereAndBack<CString>(
        state, "fox", "badger",
        [](CString& text, const char* one, const char* other) { return text.Replace(one, other); });
}

void ReplaceLongerStd(benchmark::State& state)
{
    ReplaceThereAndBack<std::string>(state, "fox", "badger", ReplaceAll);
}

BENCHMARK(BareIncrement);
BENCHMARK(Copy);
BENCHMARK(BareIncrementAndDecrement);
BENCHMARK(CopyAndDestroy);
BENCHMARK(Append<CString>)->Name("Append");
BENCHMARK(Append<std::string>)->Name("AppendStd");
BENCHMARK(FindCharacter);
BENCHMARK(FindCharacterStd);
BENCHMARK(FindText);
BENCHMARK(FindTextStd);
BENCHMARK(ReplaceSame);
BENCHMARK(ReplaceSameStd);
BENCHMARK(ReplaceLonger);
BENCHMARK(ReplaceLongerStd);

} // namespace

int main(int argc, char** argv)
{
    return Bench::RunRepeated(argc, argv, "string");
}
