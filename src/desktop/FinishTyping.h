// Lets the field with the focus give what is being typed in it, as if the user had left it: before a command runs, and
// before the window closes.
#pragma once

void FinishTyping();
