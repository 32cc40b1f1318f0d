#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/rpc/private/RequestFields.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace
{

/// A proxy without a connection: keeps what it would send and answers waiting requests at once.
class RecordingProxy : public CNTProxy_CLToGS
{
public:
    bool Send(CNTPacket& packet) override
    {
        Sent = packet;
        if (Answer) {
            short serial = 0;
            packet.SetBufPoint(SerialAt);
            packet >> serial;
            CNTPacket reply;
            reply << static_cast<unsigned short>(Kesra::GS_REPLY_10002) << static_cast<unsigned short>(0)
                  << serial;
            Answer(reply);
            reply.SetBufPoint(6);
            EXPECT_TRUE(DeliverReply(serial, reply));
        }
        return true;
    }
    void ProcessProxyError() override { ++Errors; }

    std::vector<int> Bytes() const
    {
        return std::vector<int>(Sent.GetBuf(), Sent.GetBuf() + Sent.GetBufSize());
    }

    CNTPacket Sent;
    std::function<void(CNTPacket&)> Answer;
    unsigned short SerialAt = 4;
    int Errors = 0;
};

void ResultOnly(CNTPacket& reply)
{
    reply << 77U;
}

TEST(RequestBytes, RequestsWithoutFieldsAreTheirHeader)
{
    RecordingProxy proxy;
    EXPECT_EQ(proxy.CS_EnterSession(), GS_OK);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0xEF, 0x03, 4, 0}));
    proxy.CS_Breakwith_Party();
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0x8B, 0x13, 4, 0}));
}

TEST(RequestBytes, ScalarsAndTexts)
{
    RecordingProxy proxy;
    proxy.CS_BearAgain(7);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0xF1, 0x03, 6, 0, 7 ^ 0x3C, 0}));
    proxy.CS_GM_Transparent(true);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0x2C, 0x23, 5, 0, 1 ^ 0x3C}));
    proxy.CS_GM_Purge_Avatar("");
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0x2F, 0x23, 6, 0, 0x3C, 0}));
    CFixCharString<200> line("");
    proxy.CS_Chat(line);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0xD2, 0x07, 6, 0, 0x3C, 0}));
    proxy.CS_Response_Make_Party(5, true);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0x8A, 0x13, 9, 0, 5 ^ 0x3C, 0, 0, 0, 1 ^ 0x3C}));
}

TEST(RequestBytes, RecordsAndLists)
{
    RecordingProxy proxy;
    std::vector<TItem> items;
    std::vector<TSkill> skills;
    proxy.CS_Dealing(1, items, skills, 2);
    EXPECT_EQ(proxy.Sent.GetBufSize(), 16);
    CDRVector movement;
    proxy.CS_AvatarMove(movement, 3, 4);
    EXPECT_EQ(proxy.Sent.GetBufSize(), 26);
    proxy.CS_Avatar_AttackMonster(9);
    EXPECT_EQ(proxy.Sent.GetBufSize(), 16);

    items.resize(300);
    proxy.CS_Dealing(1, items, skills, 2);
    EXPECT_EQ(proxy.Sent.GetBufSize(), 4 + 4 + 2 + 255 * 16 + 2 + 4) << "what does not fit is left out";
}

TEST(RequestBytes, WaitingRequestsCarryTheirSerial)
{
    RecordingProxy proxy;
    proxy.Answer = [](CNTPacket& reply) { reply << 36585.5 << 77U; };
    COLEDateTime when;
    unsigned long result = 0;
    EXPECT_EQ(proxy.CS_DeleteAvatar(2, when, result), GS_OK);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0xEC, 0x03, 8, 0, 1 ^ 0x3C, 0, 2 ^ 0x3C, 0}));
    EXPECT_EQ(static_cast<double>(when), 36585.5);
    EXPECT_EQ(result, 77U);
    EXPECT_EQ(proxy.GetPendingCount(), 0);

    proxy.Answer = ResultOnly;
    proxy.SerialAt = 5;
    CFixCharString<20> nickname("abc");
    EXPECT_EQ(proxy.CS_Change_AvatarNickName(nickname, result), GS_OK);
    EXPECT_EQ(proxy.Bytes(), (std::vector<int>{0xF7, 0x03, 12, 0, 1 ^ 0x3C, 2 ^ 0x3C, 0, 3 ^ 0x3C, 0,
                                               'a' ^ 0x3C, 'b', 'c'}));
}

TEST(RequestBytes, SerialsCycleAndSendOnlyRequestsTakeNone)
{
    RecordingProxy proxy;
    proxy.Answer = ResultOnly;
    unsigned long result = 0;
    for (int i = 1; i <= CNTProxy::LastSerial; ++i)
        ASSERT_EQ(proxy.CS_CancelDeleteAvatar(1, result), GS_OK);
    EXPECT_EQ(proxy.NextSerial, 1);
    proxy.Answer = nullptr;
    proxy.CS_LeaveSession();
    EXPECT_EQ(proxy.NextSerial, 1);
}

TEST(RequestBytes, AReplyThatEndsEarlyFillsWhatItCan)
{
    RecordingProxy proxy;
    proxy.Answer = [](CNTPacket& reply) { reply << static_cast<unsigned short>(9) << static_cast<short>(3); };
    CString account("account");
    CString password;
    unsigned short value = 0;
    std::vector<TAvatar> avatars(5);
    std::vector<TPrivData> privData(2);
    unsigned long result = 123;
    EXPECT_EQ(proxy.CS_Logon(account, password, value, avatars, privData, result), GS_OK);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(avatars.size(), 3U);
    EXPECT_EQ(privData.size(), 2U) << "its count is not there";
    EXPECT_EQ(result, 123U);
}

/// A list that a reply makes longer keeps the elements it had, however much memory it had.
TEST(RequestBytes, AListThatGrowsKeepsWhatNoReplyBrings)
{
    RecordingProxy proxy;
    CString account("account");
    CString password;
    unsigned short value = 0;
    std::vector<TAvatar> avatars(1);
    avatars[0].SetLastZoneID(7);
    avatars[0].SetDRVectorState(DR_FOLLOW);
    std::vector<TPrivData> privData(1);
    privData[0].SetPower(100);
    privData[0].UpdateMaxHP();
    const unsigned short maxHP = privData[0].MaxHP;
    ASSERT_NE(maxHP, 0);
    proxy.Answer = [](CNTPacket& reply) {
        reply << static_cast<unsigned short>(9) << static_cast<short>(30);
    };
    unsigned long result = 0;
    EXPECT_EQ(proxy.CS_Logon(account, password, value, avatars, privData, result), GS_OK);
    ASSERT_EQ(avatars.size(), 30U);
    EXPECT_EQ(avatars[0].GetLastZoneID(), 7);
    EXPECT_EQ(avatars[0].GetDRVector()->GetDRState(), DR_FOLLOW);

    privData.resize(30);
    EXPECT_EQ(privData[0].MaxHP, maxHP);
}

TEST(RequestBytes, AMissingReplyIsAnErrorAndLeavesNothingBehind)
{
    RecordingProxy proxy;
    proxy.SetReplyTimeLimit(10);
    std::vector<TItem> items(2);
    std::vector<TSkill> skills(1);
    unsigned long result = 0;
    EXPECT_EQ(proxy.CS_TryOnSession(1, 2, items, skills, result), GS_REPLY_ERROR);
    EXPECT_EQ(result, 3U);
    EXPECT_EQ(items.size(), 2U);
    EXPECT_EQ(proxy.Errors, 1);
    EXPECT_EQ(proxy.GetPendingCount(), 0);
    EXPECT_FALSE(proxy.DeliverReply(1, proxy.Sent)) << "a late reply finds nothing";
}

TEST(RequestBytes, ASerialThatStillWaitsIsPassedOver)
{
    RecordingProxy proxy;
    std::vector<std::unique_ptr<CNestedReply>> waiting;
    const auto registerOne = [&] { waiting.emplace_back(proxy.PreNestedRequestReply()); };
    for (int i = 0; i < CNTProxy::LastSerial; ++i)
        registerOne();
    EXPECT_EQ(waiting.back()->Serial, 10000);
    registerOne();
    EXPECT_EQ(waiting.back(), nullptr) << "all of them wait";
    EXPECT_EQ(proxy.GetPendingCount(), 10000);
    unsigned long result = 77;
    EXPECT_EQ(proxy.CS_CancelDeleteAvatar(1, result), GS_REPLY_ERROR);
    EXPECT_EQ(result, 77U) << "as when there is no memory for it";
    for (const short answered : {short{3}, short{5}, short{4}})
        EXPECT_TRUE(proxy.DeliverReply(answered, proxy.Sent));
    for (const short free : {short{3}, short{4}, short{5}}) {
        registerOne();
        ASSERT_NE(waiting.back(), nullptr);
        EXPECT_EQ(waiting.back()->Serial, free);
    }
}

/// The builder that writes all fields at once must give the bytes that the operators give.
TEST(RequestBytes, BothBuildersAgree)
{
    CDRVector movement;
    movement.SetSpeed(2.5F);
    movement.SetAY(-90.0F);
    CNTVector position(1.0F, 2.0F, -3.0F);
    const CString longText('x', 1500);
    const auto compare = [](const auto&... fields) {
        CNTPacket atOnce;
        Kesra::WriteFieldsAtOnce(atOnce, 2002, Kesra::AsField(fields)...);
        CNTPacket each;
        Kesra::WriteEachField(each, 2002, Kesra::AsField(fields)...);
        EXPECT_EQ(atOnce.GetBufSize(), each.GetBufSize());
        EXPECT_EQ(atOnce.GetBufPoint(), each.GetBufPoint());
        EXPECT_EQ(std::memcmp(atOnce.GetBuf(), each.GetBuf(), CNTPacket::Capacity), 0);
    };
    compare();
    compare('c', true, static_cast<short>(-2), static_cast<unsigned short>(3), -4, 5U, -6L, 7UL, 8.5F, 9.25);
    compare(movement, static_cast<unsigned short>(7), 8UL);
    compare(position, CString("text"), CFixCharString<20>("name"), 1);
    compare(longText, longText, longText, 1, static_cast<short>(2));
}

} // namespace
