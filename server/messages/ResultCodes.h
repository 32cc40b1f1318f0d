#pragma once

namespace Kesra
{

/// What the server answers: the 32-bit code at the end of every reply, and the 16-bit code of
/// SC_EVENT16010 and the 8-bit one of SC_EVENT29003 when a request without a reply is refused. 3 is not
/// among them: the client writes it itself when no reply came.
enum class Result : unsigned char {
    Done = 0,
    BadArgument = 1, ///< a value out of range, or one that does not fit the others
    NotLoggedOn = 2, ///< the connection has no account yet
    WrongPassword = 4,
    AccountInUse = 5, ///< this connection has an account already
    Full = 6,         ///< no room for more: accounts, avatars, members, places in a bag
    NoSuchAvatar = 7,
    AvatarExists = 8, ///< the account's place or the name is taken
    BadName = 9,      ///< of an avatar or an account: empty, too long, or with blanks
    NotReady = 10,    ///< no avatar has been chosen with CS_TryOnSession
    NotPlaying = 11,
    AlreadyPlaying = 12,
    NoSuchSession = 13,
    NoSuchObject = 14, ///< nothing in the session carries this object ID
    NoSuchItem = 15,
    NoSuchSkill = 16,
    NotEnoughGold = 17,
    NotAllowed = 18, ///< only game masters, or only the party's boss
    Dead = 19,
    Silenced = 20, ///< a game master has forbidden the avatar to chat
    NotTrading = 21,
    PlaceTaken = 22, ///< something else lies, or is worn, where the thing is to go
};

/// The code in words, for the log.
const char* TextOf(Result result);

/// The kinds of SC_EVENT18001; its text is the name of the avatar it is about.
enum class Notice : char {
    PartyInvitation = 1, ///< NAME asks to join its party
    PartyJoined = 2,
    PartyRefused = 3,
    PartyLeft = 4,
    PartyBoss = 5, ///< NAME leads the party from now on
};

/// What SC_BARTER50004 says of a deal.
enum class DealState : short {
    Cancelled = 0,
    Signed = 1, ///< by the other side
    Failed = 2, ///< an offer could not be kept; nothing changed hands
};

/// The last value of an attack result.
enum class Outcome : char { Hit = 0, Killed = 1 };

} // namespace Kesra
