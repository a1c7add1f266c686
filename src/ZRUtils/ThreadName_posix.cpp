#include "ThreadName.h"

// QThread has done it.
void ThreadName::set(const QString & /*name*/) { }
