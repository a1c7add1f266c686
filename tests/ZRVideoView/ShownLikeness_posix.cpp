#include "ShownLikeness.h"

const ShownLikeness ShownLikeness::presented = computed;
