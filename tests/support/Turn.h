#pragma once

// Radians of a whole turn. Standard C++ has no M_PI.
constexpr double wholeTurn = 6.283185307179586;
