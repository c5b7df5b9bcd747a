#pragma once

/// Lets the descriptors 0 to 2 that the caller has closed stand for nothing: writing to them, or reading from 0, goes
/// on failing, but no file that is opened later gets their numbers, and with them what is meant for somebody else. To
/// be called before anything is opened.
void reserveStandardDescriptors();
