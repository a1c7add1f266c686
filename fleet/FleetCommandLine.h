#pragma once

#include "FleetOptions.h"

#include <QStringList>

// The program's options.
namespace FleetCommandLine {

enum Reading { Good, Help, Version, Wrong };

// `text` is the help to print, or one line that says what is wrong.
Reading read(const QStringList &arguments, FleetOptions &options, QString *text);

}
