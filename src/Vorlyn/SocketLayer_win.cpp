#include "SocketLayer.h"

#include <winsock2.h>

namespace SocketLayer {

Status start()
{
    WSADATA data = {};
    const int result = WSAStartup(MAKEWORD(2, 2), &data);
    return {data.wHighVersion, data.wVersion, result};
}

void stop()
{
    WSACleanup();
}

}
