// The names of the description files.
