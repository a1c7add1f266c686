#pragma once

class QString;

// What debuggers show of a thread.
namespace ThreadName {

// Names the calling thread, where QThread doesn't tell the system its object's name.
void set(const QString &name);

}
