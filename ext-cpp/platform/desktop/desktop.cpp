// The desktop simulation: window list, cursor, keyboard.
