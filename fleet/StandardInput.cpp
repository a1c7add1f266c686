#include "StandardInput.h"

void StandardInput::take(const QByteArray &bytes)
{
    rest.append(bytes.isEmpty() ? QByteArray("\n") : bytes); // the last line may lack its end
    for (int end = rest.indexOf('\n'); end >= 0; end = rest.indexOf('\n')) {
        const QByteArray text = rest.left(end).trimmed();
        rest.remove(0, end + 1);
        if (!text.isEmpty())
            emit line(text);
    }
}
