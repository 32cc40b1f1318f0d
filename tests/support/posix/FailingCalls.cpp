#include "tests/support/posix/FailingCalls.h"

#include <array>

std::atomic<int> WaitingPolls{0};
std::atomic<int> BlockingReceives{0};

namespace
{

struct Plan {
    int Error;
    int Left;
};

thread_local constinit std::array<Plan, Interposed::CallCount> Plans{};

Plan& PlanOf(SystemCall call)
{
    return Plans[static_cast<std::size_t>(call)];
}

} // namespace

Failing::Failing(SystemCall call, int error, int times) : Call(call), Times(times)
{
    PlanOf(call) = {error, times};
}

Failing::~Failing()
{
    PlanOf(Call) = {};
}

int Failing::GetFailures() const
{
    return Times - PlanOf(Call).Left;
}

int Interposed::FailureOf(Call call, const void*)
{
    WaitingPolls += call == Call::WaitingPoll;
    BlockingReceives += call == Call::WaitingReceive;
    Plan& plan = PlanOf(call);
    if (plan.Left == 0)
        return 0;
    --plan.Left;
    return plan.Error;
}

std::optional<std::size_t> Interposed::ShareOf(Call call, const void* caller, std::size_t size)
{
    return Fails(call, caller) ? std::nullopt : std::optional(size);
}
