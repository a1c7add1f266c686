#include "SocketLayer.h"

namespace SocketLayer {

Status start()
{
    constexpr int version = 0x0202;
    return {version, version, 0};
}

void stop() { }

}
