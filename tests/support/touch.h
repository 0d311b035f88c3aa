#pragma once

class QLabel;
class QWidget;

namespace tests {

// A tap in the middle of `target`; its shown window delivers it to whatever
// lies on top there, as a finger's.
void tap(QWidget *target);

// Nothing of the label's text is cut off.
bool showsItsWholeText(const QLabel *label);

} // namespace tests
