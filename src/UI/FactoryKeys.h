#pragma once

class QWidget;

// From now on the widget misses a Return, Enter or Esc that repeats because it is held down: what
// one press has opened or answered, the same press neither answers nor opens again. GUI thread.
void ignoreHeldKeys(QWidget *widget);
