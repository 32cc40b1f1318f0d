// Plays sessions of a client in which calls of the system fail, and checks that what is promised holds.

#include "tests/torture/Runner.h"
#include "tests/torture/Server.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <signal.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Torture
{
namespace
{

struct Options {
    unsigned Places = 6;
    unsigned Cuts = 100;
    std::uint64_t Seed = 1;
    unsigned Workers = std::max(1U, std::thread::hardware_concurrency());
    std::string Only;
};

Options ParseOptions(int argc, char** argv)
{
    CLI::App app{"Lets calls of the system fail under a client and checks that it keeps its promises."};
    Options options;
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--places", options.Places, "at so many of its calls each call fails, one per session")
        ->capture_default_str();
    app.add_option("--cuts", options.Cuts, "sessions whose transfers are cut into pieces")
        ->capture_default_str();
    app.add_option("--seed", options.Seed, "chooses the calls and the pieces")->capture_default_str();
    app.add_option("--workers", options.Workers, "sessions at a time")->capture_default_str();
    app.add_option("--case", options.Only, "one case alone, as the report names it");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    return options;
}

/// A directory for the log of one worker, which is the current one while it lives.
class OwnDirectory
{
public:
    OwnDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "torture-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no directory can be made for the log");
        Path = name;
        std::filesystem::current_path(Path);
    }
    OwnDirectory(const OwnDirectory&) = delete;
    OwnDirectory& operator=(const OwnDirectory&) = delete;
    ~OwnDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(Path, ignored);
    }

private:
    std::filesystem::path Path;
};

/// Every so manyth case, beginning with one of the first.
Totals RunShare(unsigned short port, const std::vector<Case>& cases, unsigned first, unsigned step)
{
    const OwnDirectory directory;
    Runner runner(port);
    for (std::size_t i = first; i < cases.size(); i += step)
        runner.Run(cases[i]);
    return runner.GetTotals();
}

void AddTotals(Totals& sums, const Totals& part)
{
    sums.Cases += part.Cases;
    sums.Hit += part.Hit;
    sums.Faulty += part.Faulty;
    sums.Connections += part.Connections;
    sums.Reconnects += part.Reconnects;
    sums.Pushes += part.Pushes;
    sums.Chats += part.Chats;
    for (std::size_t call = 0; call < CallCount; ++call) {
        sums.Calls[call] += part.Calls[call];
        sums.Failures[call] += part.Failures[call];
    }
    AddNames(sums.Escaped, part.Escaped.data());
}

Totals RunAll(unsigned short port, const std::vector<Case>& cases, unsigned workers)
{
    auto* parts = static_cast<Totals*>(MakeShared(sizeof(Totals) * workers));
    std::vector<pid_t> processes;
    for (unsigned worker = 0; worker < workers; ++worker) {
        processes.push_back(fork());
        if (processes.back() < 0)
            throw std::runtime_error("no process can be forked");
        if (processes.back() != 0)
            continue;
        parts[worker] = RunShare(port, cases, worker, workers);
        _exit(0);
    }
    Totals sums;
    for (unsigned worker = 0; worker < workers; ++worker) {
        int status = 0;
        waitpid(processes[worker], &status, 0);
        if (status != 0)
            throw std::runtime_error("a worker has failed");
        AddTotals(sums, parts[worker]);
    }
    return sums;
}

/// One line per call that has failed; returns how many have.
unsigned Report(const Totals& sums)
{
    unsigned functions = 0;
    std::printf("%-28s %12s %10s\n", "call", "made", "failed");
    for (std::size_t call = 0; call < CallCount; ++call) {
        std::printf("%-28s %12llu %10llu\n", NameOf(static_cast<Call>(call)), sums.Calls[call],
                    sums.Failures[call]);
        functions += sums.Failures[call] != 0;
    }
    std::printf("std::bad_alloc has left: %s\n", sums.Escaped[0] != '\0' ? sums.Escaped.data() : "nothing");
    return functions;
}

bool Run(const Options& options)
{
    if (KesraTortureFaults == nullptr || !KesraTortureFaults()->Watch("libKesraNTC"))
        throw std::runtime_error("run it with the library of failing calls preloaded, as run-torture does");
    auto* findings = new (MakeShared(sizeof(Outcome))) Outcome;
    const ServerProcess server = StartServer(*findings);
    std::vector<Case> cases;
    if (options.Only.empty()) {
        const OwnDirectory directory;
        cases = MakeCases(Runner(server.Port).Count(), options.Places, options.Cuts, options.Seed);
        std::printf("%zu cases, seed %llu\n", cases.size(), static_cast<unsigned long long>(options.Seed));
    } else {
        cases.push_back(CaseNamed(options.Only));
    }
    std::fflush(stdout);
    const Totals sums = RunAll(server.Port, cases, options.Workers);
    const bool isServerAlive = waitpid(server.Process, nullptr, WNOHANG) == 0;
    if (isServerAlive) {
        kill(server.Process, SIGKILL);
        waitpid(server.Process, nullptr, 0);
    }
    const unsigned functions = Report(sums);
    if (findings->IsFaulty)
        std::printf("at the server: %s\n", findings->Fault.data());
    unsigned long long failures = 0;
    for (const unsigned long long each : sums.Failures)
        failures += each;
    const bool isGood =
        sums.Faulty == 0 && !findings->IsFaulty && isServerAlive && sums.Cases == cases.size();
    std::printf("torture: %u cases, %u of them hit, %llu failed calls of %u functions, %llu connections "
                "(%llu reconnects), "
                "%llu pushes and %llu chat lines: %s\n",
                sums.Cases, sums.Hit, failures, functions, sums.Connections, sums.Reconnects, sums.Pushes,
                sums.Chats, isGood ? "every promise was kept" : "FAILED");
    return isGood;
}

} // namespace
} // namespace Torture

int main(int argc, char** argv)
{
    try {
        return Torture::Run(Torture::ParseOptions(argc, argv)) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "torture: %s\n", error.what());
        return 2;
    }
}
