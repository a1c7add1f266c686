#pragma once

// In what systems that tests run on differ as to a camera's stream.
namespace StreamFacts {

// Whether a player that is told to decode by hardware shows pictures. Else it can make a device,
// which decides it, and the device then decodes nothing.
bool hardwareGivesPictures();
// How many large pictures a second can be shown while a test looks at them.
extern const int pace;
// Whether who connects to an address at which nobody listens is told so. Else nothing ever comes.
bool refusalIsTold();

}
