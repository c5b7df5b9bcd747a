// Keeps the library from being empty until its first class arrives.
