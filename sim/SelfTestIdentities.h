#pragma once

// The test identities of the self-test harness. The built-in scenario has each
// of them as an available buddy: an AIM screen name, a person on the
// local-network service (found by first and last name) and a Jabber address.
namespace sim {

inline constexpr const char* SelfTestAIMScreenName = "selftest.aim";
inline constexpr const char* SelfTestPersonFirstName = "Tess";
inline constexpr const char* SelfTestPersonLastName = "Tester";
inline constexpr const char* SelfTestJabberAddress = "selftest@jabber.velmo.example";

}  // namespace sim
