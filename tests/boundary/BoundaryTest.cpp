// What passes between a game and the library when each is a module of its own. This program links the shared
// library as a game does; the other test programs contain the library's objects.
#include <KesraNTC/KesraNTC.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

template <class Work> HRESULT ErrorOf(Work work)
{
    try {
        work();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    }
}

/// A value that cannot be written: it refers to nothing.
_variant_t NullReference()
{
    _variant_t value;
    value.vt = VT_I4 | VT_BYREF;
    value.byref = nullptr;
    return value;
}

std::string Text(const _variant_t& value)
{
    EXPECT_EQ(VT_BSTR, value.vt);
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << value;
    packet.SetBufPoint(CNTPacket::HeaderSize);
    unsigned short type = 0;
    CString text;
    packet >> type >> text;
    return static_cast<const char*>(text);
}

TEST(Boundary, AGameCatchesWhatVariantsThrow)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0);
    EXPECT_EQ(E_POINTER, ErrorOf([&] { packet << NullReference(); }));

    CPropCollection properties;
    properties.SetProperty("place", NullReference());
    EXPECT_EQ(E_POINTER, ErrorOf([&] { packet << properties; }));
    EXPECT_EQ(E_POINTER,
              ErrorOf([&] { static_cast<void>(static_cast<std::vector<unsigned char>>(properties)); }));
    EXPECT_EQ(E_POINTER, ErrorOf([&] { static_cast<void>(static_cast<_variant_t>(properties)); }));

    properties.EraseProperty("place");
    EXPECT_EQ(S_OK, ErrorOf([&] { packet << properties; }));
}

/// What a game passes as a literal is converted on its own side with the library's help.
TEST(Boundary, AGameWritesItsTextsAsLiterals)
{
    _variant_t value("\xB0\xA1 text");
    EXPECT_EQ("\xB0\xA1 text", Text(value));
    value = "other";
    EXPECT_EQ("other", Text(value));
    EXPECT_EQ("", Text(_variant_t("")));
    // Half a character at the end takes nothing behind the text.
    EXPECT_EQ("a?", Text(_variant_t("a\xB0")));

    CPropCollection properties;
    properties.SetProperty("name", "Mina");
    EXPECT_EQ("Mina", Text(properties.GetProperty("NAME")));

    CString wide(L"\uAC00 wide");
    EXPECT_STREQ("\xB0\xA1 wide", wide);
    wide = L"again";
    EXPECT_STREQ("again", wide);
    wide = value.bstrVal;
    EXPECT_STREQ("other", wide);
    EXPECT_STREQ("other", CString(value.bstrVal));
}

/// Each of these is allocated on one side, grows on the other and is freed on the first.
TEST(Boundary, TextsListsAndValuesChangeSides)
{
    CString text("Kesra");
    text += std::string(1000, '!').c_str();
    CString copy = text;
    text.Replace("!", "?!");
    EXPECT_EQ(2005, text.GetLength());
    EXPECT_EQ(1005, copy.GetLength());

    CPropCollection properties;
    for (int i = 0; i < 2000; ++i) {
        CString name;
        name.Format("name %04d", i);
        properties.SetProperty(name, _variant_t(OLESTR("value")));
    }
    std::vector<unsigned char> image = properties;
    image.reserve(2 * image.size());
    CPropCollection other;
    other = image;
    EXPECT_EQ(image, static_cast<std::vector<unsigned char>>(other));
    EXPECT_STREQ("value", Text(other.GetProperty("NAME 1999")).c_str());

    TAvatar avatar;
    avatar.SetNickname(copy);
    std::vector<TAvatar> avatars(3, avatar);
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << copy;
    packet.SetBufPoint(CNTPacket::HeaderSize);
    CString read;
    packet >> read;
    EXPECT_EQ(copy, read);
    EXPECT_EQ(copy, avatars[2].GetNickname());
}

} // namespace
