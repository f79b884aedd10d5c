#pragma once
// A text box whose typed letters become capitals as they are typed (a symbol box). Text pasted
// or set from code is left as it is.

class QLineEdit;

void TypeInCapitals(QLineEdit* edit);
