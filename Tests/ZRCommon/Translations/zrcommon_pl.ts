<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl_PL" sourcelanguage="en_US">
<context>
    <name>ZRCommon</name>
    <message numerus="yes">
        <source>%n songs in %1</source>
        <translation>
            <numerusform>%n utwór w %1</numerusform>
            <numerusform>%n utwory w %1</numerusform>
            <numerusform>%n utworów w %1</numerusform>
        </translation>
    </message>
</context>
</TS>
