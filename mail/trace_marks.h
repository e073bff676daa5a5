#pragma once

#include "ports/trace.h"

namespace tavrix::mail {

// The marks of the mail procedures, one table each. A letter behind the last number says how a
// procedure was left: "k" at its end, "u" early. Support staff search their logs for these very
// words, so they are kept as they have always been.

namespace detail {

inline constexpr base::TextView form = u"C_Getmail";

inline constexpr base::TextView dodaj_mail_steps[] = {
    u"1",         u"2",         u"3",        u"4",  u"5",  u"6",  u"7",  u"8",  u"9",     u"10",
    u"11",        u"12",        u"13",       u"14", u"15", u"16", u"17", u"18", u"19",    u"20",
    u"21",        u"22",        u"23",       u"24", u"25", u"26", u"27", u"28", u"29",    u"30",
    u"31",        u"32",        u"33",       u"34", u"35", u"36", u"37", u"38", u"39",    u"40",
    u"41",        u"42",        u"43",       u"44", u"45", u"46", u"47", u"48", u"49",    u"50",
    u"51",        u"52",        u"53",       u"54", u"55", u"56", u"57", u"58", u"59",    u"60",
    u"61",        u"62",        u"63",       u"64", u"65", u"66", u"67", u"68", u"4exit", u"25next",
    u"34exitfor", u"36exitfor", u"46exitdo", u"68k"};

inline constexpr base::TextView dialogue_steps[] = {
    u"1",  u"2",  u"3",  u"4",  u"5",  u"6",  u"7",  u"8",  u"9",  u"10", u"11",
    u"12", u"13", u"14", u"15", u"16", u"17", u"18", u"19", u"20", u"21", u"22",
    u"23", u"24", u"25", u"26", u"27", u"28", u"29", u"30", u"31", u"32", u"33",
    u"34", u"35", u"36", u"37", u"38", u"39", u"40", u"41", u"42", u"43", u"44"};

inline constexpr base::TextView fetch_steps[] = {
    u"1",        u"1a-problem", u"2",        u"3", u"3:dodje",
    u"3:dodane", u"3:kasuje",   u"3:kończe", u"4", u"4:kończe all"};
inline constexpr base::TextView time_out_steps[] = {u"1", u"2", u"3", u"4", u"4u"};
inline constexpr base::TextView disconnect_steps[] = {u"1", u"2", u"2k"};
inline constexpr base::TextView error_steps[] = {u"1"};

}  // namespace detail

inline constexpr ports::TraceProcedure dodaj_mail_marks{detail::form, u"DodajMail",
                                                        detail::dodaj_mail_steps};
inline constexpr ports::TraceProcedure fetch_marks{detail::form, u"Command2_Click",
                                                   detail::fetch_steps};
inline constexpr ports::TraceProcedure timer_marks{detail::form, u"Timer_Timer",
                                                   detail::dialogue_steps};
inline constexpr ports::TraceProcedure data_arrival_marks{detail::form, u"Winsock1_DataArrival",
                                                          detail::dialogue_steps};
/// Its only mark is followed by the socket error's number and description.
inline constexpr ports::TraceProcedure socket_error_marks{detail::form, u"Winsock1_Error",
                                                          detail::error_steps};
inline constexpr ports::TraceProcedure time_out_marks{detail::form, u"TimerTimout_Timer",
                                                      detail::time_out_steps};
inline constexpr ports::TraceProcedure disconnect_marks{detail::form, u"DisconnectMe",
                                                        detail::disconnect_steps};

}  // namespace tavrix::mail
