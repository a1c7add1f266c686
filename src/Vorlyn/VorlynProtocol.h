#pragma once

// Numbers of the cameras' protocol. How they are used is told in docs/protocol.md.
namespace VorlynProtocol {

constexpr char group[] = "239.255.255.250";
constexpr unsigned short requestPort = 5888; // where every request goes
constexpr unsigned short replyPort = 5999; // where replies come in
constexpr unsigned short anyPort = 0; // source of requests: the system chooses

// Bytes. The length field is big-endian and counts the header too.
constexpr int lengthSize = 4;
constexpr int reservedSize = 4;
constexpr int headerSize = lengthSize + reservedSize;
constexpr int maxDatagram = 2048;

constexpr unsigned long retryMilliseconds = 1000; // after a socket could not be made
constexpr unsigned long sendPollMilliseconds = 1;
constexpr unsigned long searchPollMilliseconds = 10;

constexpr double replySeconds = 3;
constexpr double scanSeconds = 10; // a camera takes its time for a Wi-Fi scan

}
