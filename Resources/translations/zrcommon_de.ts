<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>ZRCommon</name>
    <message>
        <source>Songs</source>
        <extracomment>Follows the number of songs in the list: &quot;12 Songs&quot;.</extracomment>
        <translation>Titel</translation>
    </message>
</context>
</TS>
