#pragma once

#include "Platform/Foundation/Object.h"

// Model objects as hosts have them: one class below another, and one beside them.

class Song : public platform::Object
{
    ZR_OBJECT(Song, platform::Object)
};

class ProtectedSong : public Song
{
    ZR_OBJECT(ProtectedSong, Song)
};

class Photo : public platform::Object
{
    ZR_OBJECT(Photo, platform::Object)
};
