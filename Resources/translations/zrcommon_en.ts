<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en_US">
<context>
    <name>ZRCommon</name>
    <message numerus="yes">
        <source>%n slides</source>
        <translation>
            <numerusform>%n slide</numerusform>
            <numerusform>%n slides</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n Slides</source>
        <translation>
            <numerusform>%n Slide</numerusform>
            <numerusform>%n Slides</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n songs</source>
        <translation>
            <numerusform>%n song</numerusform>
            <numerusform>%n songs</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n photos</source>
        <translation>
            <numerusform>%n photo</numerusform>
            <numerusform>%n photos</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n selected</numerusform>
            <numerusform>%n selected</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read as photos.</source>
        <translation>
            <numerusform>%n file could not be read as a photo.</numerusform>
            <numerusform>%n files could not be read as photos.</numerusform>
        </translation>
    </message>
</context>
</TS>
