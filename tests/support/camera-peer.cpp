// camera-peer LOCAL SIDE
// A CameraPeer for a test that can't open its sockets by itself. First it tells whether it is open,
// then each line of its standard input is an order and gets a line:
//   receive MILLISECONDS   the datagram, hexadecimal; empty when none came
//   send DATAGRAM          "true" when it left
#include "CameraPeer.h"

#include <iostream>
#include <string>

namespace {

const char *word(bool value)
{
    return value ? "true" : "false";
}

}

int main(int count, char **arguments)
{
    if (count != 3)
        return 2;
    CameraPeer peer(arguments[1], CameraPeer::Side(std::stoi(arguments[2])));
    std::cout << word(peer.isOpen()) << std::endl;
    std::string order, operand;
    while (std::getline(std::getline(std::cin, order, ' '), operand)) {
        if (order == "receive")
            std::cout << peer.receive(std::stoi(operand)).toHex().toStdString() << std::endl;
        else
            std::cout << word(peer.send(QByteArray::fromHex(operand.c_str()))) << std::endl;
    }
}
