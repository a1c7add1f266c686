#include "FleetStream.h"

const char FleetStream::path[] = "/live1";

bool FleetStream::isAvailable()
{
    return false;
}

std::unique_ptr<FleetStream> FleetStream::create(const FleetStreamShape &, const Report &)
{
    return nullptr;
}
