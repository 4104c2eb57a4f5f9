<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="is" sourcelanguage="en">
<context>
    <name>Language</name>
    <message>
        <source>-</source>
        <translation>a&#xE4A7;</translation>
    </message>
</context>
<context>
    <name>VeltaWizard</name>
    <message>
        <source>Next</source>
        <translation>&#xE4A7;</translation>
    </message>
</context>
</TS>
