#include "KesraNTC/platform/private/ReadAhead.h"
#include "tests/platform/SocketFixture.h"

#include <algorithm>

namespace
{

using ReadAheadTest = SocketTest;

// What a taker is to use up, and what it was shown.
struct Appetite {
    DWORD Limit;
    int Calls = 0;
    std::string Shown = {};
    std::string Taken = {};

    static DWORD Take(void* context, const char* data, DWORD size)
    {
        auto* self = static_cast<Appetite*>(context);
        ++self->Calls;
        const DWORD used = std::min(self->Limit, size);
        self->Shown.assign(data, size);
        self->Taken.append(data, used);
        return used;
    }
};

// What of this text lies in memory already: on Windows the system keeps all of it.
std::string Ahead(const std::string& text)
{
    return KESRANTC_UNDER_WINE ? std::string() : text;
}

TEST_F(ReadAheadTest, WhatIsUsedUpIsGoneAndTheRestIsRead)
{
    Connect();
    PeerSends("headfirstsecondpart");
    char data[16];
    Operation read;
    ASSERT_TRUE(HasBegun(read.Receive(Client, data, 4)));
    ASSERT_EQ(0, read.Harvest(Client));
    ASSERT_EQ("head", std::string(data, read.Transferred));

    Appetite none{0};
    EXPECT_EQ(0U, Kesra::ConsumeReadAhead(Client, Appetite::Take, &none));
    EXPECT_EQ(Ahead("firstsecondpart"), none.Shown);
    Appetite some{5};
    EXPECT_EQ(Ahead("first").size(), Kesra::ConsumeReadAhead(Client, Appetite::Take, &some));
    EXPECT_EQ(Ahead("first"), some.Taken);
    EXPECT_EQ(KESRANTC_UNDER_WINE ? 0 : 1, some.Calls);

    std::string rest = some.Taken;
    while (rest.size() < 11) {
        ASSERT_TRUE(HasBegun(read.Receive(Client, data, 11 - rest.size())));
        ASSERT_EQ(0, read.Harvest(Client));
        rest.append(data, read.Transferred);
    }
    EXPECT_EQ("firstsecond", rest);
    Appetite all{100};
    EXPECT_EQ(Ahead("part").size(), Kesra::ConsumeReadAhead(Client, Appetite::Take, &all));
    EXPECT_EQ(Ahead("part"), all.Taken);
}

TEST_F(ReadAheadTest, NobodyIsAskedWhenThereIsNothingToTake)
{
    Connect();
    char data[8];
    Appetite all{100};
    EXPECT_EQ(0U, Kesra::ConsumeReadAhead(Client, Appetite::Take, &all));
    Operation read;
    ASSERT_EQ(WSA_IO_PENDING, read.Receive(Client, data, 2));
    PeerSends("abcd");
    // The pending read comes first, though nobody has carried it on yet.
    EXPECT_EQ(0U, Kesra::ConsumeReadAhead(Client, Appetite::Take, &all));
    ASSERT_EQ(0, read.Harvest(Client));
    EXPECT_EQ("ab", std::string(data, read.Transferred));
    const SOCKET closed = Client;
    Client.Close();
    EXPECT_EQ(0U, Kesra::ConsumeReadAhead(closed, Appetite::Take, &all));
    EXPECT_EQ(0U, Kesra::ConsumeReadAhead(INVALID_SOCKET, Appetite::Take, &all));
    EXPECT_EQ(0, all.Calls);
}

} // namespace
