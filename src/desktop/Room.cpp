// Replaced while the room is built.
