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
    <message>
        <source>no command given</source>
        <translation>kein Befehl angegeben</translation>
    </message>
    <message>
        <source>there is no command &quot;%1&quot;</source>
        <translation>den Befehl „%1“ gibt es nicht</translation>
    </message>
    <message>
        <source>too few arguments for &quot;%1&quot;</source>
        <translation>zu wenige Argumente für „%1“</translation>
    </message>
    <message>
        <source>too many arguments for &quot;%1&quot;</source>
        <translation>zu viele Argumente für „%1“</translation>
    </message>
    <message>
        <source>&quot;%1&quot; takes no %2</source>
        <translation>„%1“ kennt kein %2</translation>
    </message>
    <message>
        <source>--descending needs --sort</source>
        <translation>--descending braucht --sort</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is none of Song, Artist and Time</source>
        <translation>„%1“ ist nicht Song, Artist oder Time</translation>
    </message>
    <message>
        <source>plist      any property list as JSON</source>
        <translation>plist      eine beliebige Property-List als JSON</translation>
    </message>
    <message>
        <source>archive    a keyed archive as JSON: each object where it is referred to, its class under $class;</source>
        <translation>archive    ein Keyed-Archive als JSON: jedes Objekt da, wo darauf verwiesen wird, mit $class;</translation>
    </message>
    <message>
        <source>           inside itself it is {&quot;$ref&quot;: n}, and has that number under $id</source>
        <translation>           in sich selbst ist es {&quot;$ref&quot;: n} und hat diese Nummer unter $id</translation>
    </message>
    <message>
        <source>it expands without measure</source>
        <translation>es dehnt sich ins Unermessliche aus</translation>
    </message>
    <message>
        <source>playlists  the names of a music library&apos;s playlists</source>
        <translation>playlists  die Namen der Wiedergabelisten einer Musikmediathek</translation>
    </message>
    <message>
        <source>songs      the songs of a playlist, with every key of their track dictionaries</source>
        <translation>songs      die Titel einer Wiedergabeliste mit allen Schlüsseln ihrer Einträge</translation>
    </message>
    <message>
        <source>albums     the names of a photo library&apos;s albums</source>
        <translation>albums     die Namen der Alben einer Fotomediathek</translation>
    </message>
    <message>
        <source>photos     the photos of an album: title, imagePath, creationDate</source>
        <translation>photos     die Fotos eines Albums: title, imagePath, creationDate</translation>
    </message>
    <message>
        <source>--search TEXT  songs with the text in their name, artist, album or genre, photos with the text</source>
        <translation>--search TEXT  Titel mit dem Text in Name, Interpret, Album oder Genre, Fotos mit dem Text</translation>
    </message>
    <message>
        <source>               in their caption, without regard to case</source>
        <translation>               in der Bildunterschrift, Groß- und Kleinschreibung gleich</translation>
    </message>
    <message>
        <source>--sort COLUMN  songs in the order of Song, Artist or Time</source>
        <translation>--sort COLUMN  Titel in der Ordnung von Song, Artist oder Time</translation>
    </message>
    <message>
        <source>--descending   in the opposite order</source>
        <translation>--descending   in umgekehrter Ordnung</translation>
    </message>
    <message>
        <source>--timings      a line of JSON on standard error: seconds for reading, parsing, listing,</source>
        <translation>--timings      eine Zeile JSON auf der Fehlerausgabe: Sekunden für Einlesen, Zerlegen, Auflisten,</translation>
    </message>
    <message>
        <source>               searching and sorting</source>
        <translation>               Suchen und Sortieren</translation>
    </message>
    <message>
        <source>JSON in UTF-8 goes to standard output, everything else to standard error.</source>
        <translation>JSON in UTF-8 geht auf die Standardausgabe, alles andere auf die Fehlerausgabe.</translation>
    </message>
    <message>
        <source>Exit status: 0 done, 1 input not usable, 2 wrong usage, 130 interrupted, 141 nobody reads on.</source>
        <translation>Ende mit 0: getan, 1: Eingabe nicht brauchbar, 2: falsch aufgerufen, 130: unterbrochen, 141: niemand liest weiter.</translation>
    </message>
    <message>
        <source>Each also takes --timings; --help tells more.</source>
        <translation>Alle kennen auch --timings; --help sagt mehr.</translation>
    </message>
    <message>
        <source>Reading</source>
        <translation>Einlesen</translation>
    </message>
    <message>
        <source>Writing</source>
        <translation>Schreiben</translation>
    </message>
    <message>
        <source>songs</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>photos</source>
        <translation>Fotos</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>%1 and %2 more</source>
        <translation>%1 und %2 weitere</translation>
    </message>
    <message>
        <source>standard output: %1</source>
        <translation>Standardausgabe: %1</translation>
    </message>
    <message>
        <source>no playlist is called &quot;%1&quot;; there are: %2</source>
        <translation>keine Wiedergabeliste heißt „%1“; es gibt: %2</translation>
    </message>
    <message>
        <source>no album is called &quot;%1&quot;; there are: %2</source>
        <translation>kein Album heißt „%1“; es gibt: %2</translation>
    </message>
    <message>
        <source>%1: %2 of %3 %4</source>
        <translation>%1: %2 von %3 %4</translation>
    </message>
    <message>
        <source>, %1 s left</source>
        <translation>, noch %1 s</translation>
    </message>
    <message>
        <source>the album lists a photo that is not in the database</source>
        <translation>das Album führt ein Foto auf, das nicht in der Datenbank steht</translation>
    </message>
    <message>
        <source>there is no option &quot;%1&quot;</source>
        <translation>die Option „%1“ gibt es nicht</translation>
    </message>
    <message>
        <source>&quot;%1&quot; needs a value</source>
        <translation>„%1“ braucht einen Wert</translation>
    </message>
    <message>
        <source>an option has a value that it does not take</source>
        <translation>eine Option hat einen Wert, den sie nicht nimmt</translation>
    </message>
    <message>
        <source>the name of the file is empty</source>
        <translation>der Dateiname ist leer</translation>
    </message>
    <message>
        <source>the file name is not UTF-8</source>
        <translation>der Dateiname ist kein UTF-8</translation>
    </message>
    <message>
        <source>not enough memory</source>
        <translation>der Speicher reicht nicht</translation>
    </message>
    <message>
        <source>&quot;%1&quot;</source>
        <translation>„%1“</translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation>diese Datei gibt es nicht</translation>
    </message>
    <message>
        <source>it is not a regular file</source>
        <translation>das ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file cannot be opened for reading</source>
        <translation>die Datei lässt sich nicht zum Lesen öffnen</translation>
    </message>
    <message>
        <source>the file cannot be read to its end</source>
        <translation>die Datei lässt sich nicht bis zum Ende lesen</translation>
    </message>
    <message>
        <source>the file is larger than 4 GiB</source>
        <translation>die Datei ist größer als 4 GiB</translation>
    </message>
    <message>
        <source>Could not create the image cache folder at '%1'</source>
        <translation>Der Ordner für die Miniaturbilder konnte in „%1“ nicht angelegt werden</translation>
    </message>
    <message>
        <source>not enough memory for the file</source>
        <translation>der Speicher reicht für die Datei nicht</translation>
    </message>
    <message>
        <source>this is no property list</source>
        <translation>das ist keine Property-List</translation>
    </message>
    <message>
        <source>the property list is no dictionary</source>
        <translation>die Property-List ist kein Dictionary</translation>
    </message>
    <message>
        <source>it holds neither playlists nor tracks</source>
        <translation>darin sind weder Wiedergabelisten noch Titel</translation>
    </message>
    <message>
        <source>it holds neither albums nor photos</source>
        <translation>darin sind weder Alben noch Fotos</translation>
    </message>
    <message>
        <source>folder     the photos of a folder, once their thumbnails are made and kept in it</source>
        <translation>folder     die Fotos eines Ordners, nachdem ihre Miniaturbilder in ihm angelegt sind</translation>
    </message>
    <message>
        <source>sheet      a picture of a folder's thumbnails with their titles, as a PNG file</source>
        <translation>sheet      ein Bild der Miniaturbilder eines Ordners mit ihren Titeln, als PNG-Datei</translation>
    </message>
    <message>
        <source>--width PX     the width of the sheet in pixels</source>
        <translation>--width PX     die Breite des Bogens in Pixeln</translation>
    </message>
    <message>
        <source>--verbose      every file of the folder that no thumbnail was made of, and why</source>
        <translation>--verbose      jede Datei des Ordners, die kein Miniaturbild bekam, und warum</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no width from %2 to %3</source>
        <translation>„%1“ ist keine Breite von %2 bis %3</translation>
    </message>
    <message>
        <source>Making thumbnails</source>
        <translation>Miniaturbilder</translation>
    </message>
    <message>
        <source>Drawing</source>
        <translation>Zeichnen</translation>
    </message>
    <message>
        <source>thumbnails: %1 made, %2 kept, %3 dropped, %4 refused</source>
        <translation>Miniaturbilder: %1 neu, %2 behalten, %3 entfernt, %4 abgelehnt</translation>
    </message>
    <message>
        <source>interrupted; the thumbnails made so far are kept</source>
        <translation>abgebrochen; die Miniaturbilder, die schon fertig sind, bleiben</translation>
    </message>
    <message>
        <source>interrupted; no sheet was written</source>
        <translation>abgebrochen; es wurde kein Bogen geschrieben</translation>
    </message>
    <message>
        <source>the index of its thumbnails is damaged; delete the folder &quot;%1&quot; in it</source>
        <translation>das Verzeichnis der Miniaturbilder ist beschädigt; löschen Sie den Ordner „%1“ darin</translation>
    </message>
    <message>
        <source>the index of its thumbnails cannot be written</source>
        <translation>das Verzeichnis der Miniaturbilder lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>there is no such folder</source>
        <translation>diesen Ordner gibt es nicht</translation>
    </message>
    <message>
        <source>it is not a folder</source>
        <translation>das ist kein Ordner</translation>
    </message>
    <message>
        <source>the folder cannot be opened for reading</source>
        <translation>der Ordner lässt sich nicht zum Lesen öffnen</translation>
    </message>
    <message>
        <source>the folder holds no photos</source>
        <translation>der Ordner enthält keine Fotos</translation>
    </message>
    <message>
        <source>the folder holds more photos than fit on a sheet of this width</source>
        <translation>der Ordner enthält mehr Fotos, als auf einen Bogen dieser Breite passen</translation>
    </message>
    <message>
        <source>1 photo</source>
        <translation>1 Foto</translation>
    </message>
    <message>
        <source>%1 photos</source>
        <translation>%1 Fotos</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>it begins like no picture</source>
        <translation>sie beginnt wie kein Bild</translation>
    </message>
    <message>
        <source>the file is too large</source>
        <translation>die Datei ist zu groß</translation>
    </message>
    <message>
        <source>there is not enough memory to read it</source>
        <translation>der Speicher reicht nicht, sie zu lesen</translation>
    </message>
    <message>
        <source>its name is not UTF-8</source>
        <translation>ihr Name ist nicht UTF-8</translation>
    </message>
    <message>
        <source>its thumbnail cannot be written</source>
        <translation>ihr Miniaturbild lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>Photos</source>
        <translation>Fotos</translation>
    </message>
    <message>
        <source>Open a folder of photos to begin.</source>
        <translation>Öffnen Sie zuerst einen Ordner mit Fotos.</translation>
    </message>
    <message>
        <source>Open Photo Folder…</source>
        <translation>Fotoordner öffnen …</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Reload</source>
        <translation>&amp;Neu laden</translation>
    </message>
    <message>
        <source>Show &amp;Photo</source>
        <translation>&amp;Foto zeigen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Alles auswählen</translation>
    </message>
    <message>
        <source>Select &amp;Nothing</source>
        <translation>&amp;Nichts auswählen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Larger Photos</source>
        <translation>&amp;Größere Fotos</translation>
    </message>
    <message>
        <source>&amp;Smaller Photos</source>
        <translation>&amp;Kleinere Fotos</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Size of the photos</source>
        <translation>Größe der Fotos</translation>
    </message>
    <message>
        <source>Opening “%1” was cancelled. Thumbnails made and kept: %2</source>
        <translation>Das Öffnen von „%1“ wurde abgebrochen. Gemachte und behaltene Vorschaubilder: %2</translation>
    </message>
    <message>
        <source>“%1” could not be opened. %2</source>
        <translation>„%1“ ließ sich nicht öffnen. %2</translation>
    </message>
    <message>
        <source>Open Photo Folder</source>
        <translation>Fotoordner öffnen</translation>
    </message>
    <message>
        <source>Opening “%1”…</source>
        <translation>„%1“ wird geöffnet …</translation>
    </message>
    <message>
        <source>%v of %m</source>
        <translation>%v von %m</translation>
    </message>
    <message>
        <source>There are no photos in “%1”.</source>
        <translation>In „%1“ sind keine Fotos.</translation>
    </message>
    <message>
        <source>There is no such folder.</source>
        <translation>Diesen Ordner gibt es nicht.</translation>
    </message>
    <message>
        <source>Nothing can be loaded in the background.</source>
        <translation>Im Hintergrund lässt sich nichts laden.</translation>
    </message>
    <message>
        <source>“%1” cannot be shown.</source>
        <translation>„%1“ kann nicht gezeigt werden.</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Ohne Titel</translation>
    </message>
    <message>
        <source>Untitled %1</source>
        <translation>Ohne Titel %1</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Sichern unter</translation>
    </message>
    <message>
        <source>Do you want to save the changes to “%1”?</source>
        <translation>Möchten Sie die Änderungen an „%1“ sichern?</translation>
    </message>
    <message>
        <source>Your changes will be lost if you do not save them.</source>
        <translation>Ihre Änderungen gehen verloren, wenn Sie sie nicht sichern.</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The document “%1” could not be saved.</source>
        <translation>Das Dokument „%1“ konnte nicht gesichert werden.</translation>
    </message>
    <message>
        <source>The document “%1” could not be read again.</source>
        <translation>Das Dokument „%1“ konnte nicht neu gelesen werden.</translation>
    </message>
    <message>
        <source>The file “%1” could not be opened.</source>
        <translation>Die Datei „%1“ konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>The file “%1” is open at the moment.</source>
        <translation>Die Datei „%1“ ist gerade geöffnet.</translation>
    </message>
    <message>
        <source>The file “%1” was changed by another program.</source>
        <translation>Die Datei „%1“ wurde von einem anderen Programm geändert.</translation>
    </message>
    <message>
        <source>If you save, those changes will be lost.</source>
        <translation>Wenn Sie sichern, gehen diese Änderungen verloren.</translation>
    </message>
    <message>
        <source>The file “%1” is not where it was.</source>
        <translation>Die Datei „%1“ ist nicht mehr da, wo sie war.</translation>
    </message>
    <message>
        <source>It was moved, renamed or deleted. If you save, it will be written to its old place again.</source>
        <translation>Sie wurde bewegt, umbenannt oder gelöscht. Wenn Sie sichern, wird sie wieder an ihren alten Platz geschrieben.</translation>
    </message>
    <message>
        <source>Save Anyway</source>
        <translation>Trotzdem sichern</translation>
    </message>
    <message>
        <source>Do you want to go back to the last saved version of “%1”?</source>
        <translation>Möchten Sie zur zuletzt gesicherten Fassung von „%1“ zurückkehren?</translation>
    </message>
    <message>
        <source>The changes that you made since will be lost.</source>
        <translation>Die Änderungen, die Sie seither gemacht haben, gehen verloren.</translation>
    </message>
    <message>
        <source>Revert</source>
        <translation>Zurückkehren</translation>
    </message>
    <message>
        <source>The file is damaged, or was made by another program or by a newer version of this one.</source>
        <translation>Die Datei ist beschädigt oder wurde von einem anderen Programm oder einer neueren Fassung von diesem gemacht.</translation>
    </message>
    <message>
        <source>Its content cannot be written in the form of this file.</source>
        <translation>Der Inhalt lässt sich in der Form dieser Datei nicht schreiben.</translation>
    </message>
    <message>
        <source>A new document could not be made.</source>
        <translation>Ein neues Dokument konnte nicht angelegt werden.</translation>
    </message>
    <message>
        <source>There was an error in the program.</source>
        <translation>Im Programm ist ein Fehler aufgetreten.</translation>
    </message>
    <message>
        <source>Files of this kind cannot be opened here.</source>
        <translation>Dateien dieser Art lassen sich hier nicht öffnen.</translation>
    </message>
    <message>
        <source>Its window could not be made.</source>
        <translation>Das Fenster dafür konnte nicht angelegt werden.</translation>
    </message>
    <message>
        <source>There is no such file any more.</source>
        <translation>Diese Datei gibt es nicht mehr.</translation>
    </message>
    <message>
        <source>This is not a file that can hold a document.</source>
        <translation>Das ist keine Datei, die ein Dokument enthalten kann.</translation>
    </message>
    <message>
        <source>The file is too large.</source>
        <translation>Die Datei ist zu groß.</translation>
    </message>
    <message>
        <source>You do not have permission to read the file.</source>
        <translation>Sie haben nicht das Recht, die Datei zu lesen.</translation>
    </message>
    <message>
        <source>The disk does not let the file be read.</source>
        <translation>Die Datei lässt sich von ihrem Datenträger nicht lesen.</translation>
    </message>
    <message>
        <source>The folder “%1” does not exist.</source>
        <translation>Den Ordner „%1“ gibt es nicht.</translation>
    </message>
    <message>
        <source>There is a folder of that name.</source>
        <translation>Es gibt einen Ordner dieses Namens.</translation>
    </message>
    <message>
        <source>You do not have permission to change the file.</source>
        <translation>Sie haben nicht das Recht, die Datei zu ändern.</translation>
    </message>
    <message>
        <source>The disk can only be read.</source>
        <translation>Der Datenträger lässt sich nur lesen.</translation>
    </message>
    <message>
        <source>You do not have permission to write into the folder “%1”.</source>
        <translation>Sie haben nicht das Recht, in den Ordner „%1“ zu schreiben.</translation>
    </message>
    <message>
        <source>There is not enough room on the disk.</source>
        <translation>Auf dem Datenträger ist nicht genug Platz.</translation>
    </message>
    <message>
        <source>The system reports: %1.</source>
        <translation>Das System meldet: %1.</translation>
    </message>
    <message>
        <source>Add to &amp;Storyboard</source>
        <translation>Zum &amp;Storyboard hinzufügen</translation>
    </message>
    <message>
        <source>%1 – %2 s</source>
        <translation>%1 – %2 s</translation>
    </message>
    <message>
        <source>Slides</source>
        <translation>Folien</translation>
    </message>
    <message>
        <source>Drop photos here, or add them with Slides &gt; Add Photos…</source>
        <translation>Ziehen Sie Fotos hierher, oder fügen Sie sie mit Folien &gt; Fotos hinzufügen hinzu.</translation>
    </message>
    <message>
        <source>&amp;New Storyboard</source>
        <translation>&amp;Neues Storyboard</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>Ö&amp;ffnen …</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>&amp;Zuletzt benutzt</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>&amp;Liste leeren</translation>
    </message>
    <message>
        <source>&amp;Photos</source>
        <translation>&amp;Fotos</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Sichern</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Sichern &amp;unter …</translation>
    </message>
    <message>
        <source>Re&amp;vert to Saved</source>
        <translation>&amp;Zurück zur gesicherten Fassung</translation>
    </message>
    <message>
        <source>Move Slides</source>
        <translation>Folien verschieben</translation>
    </message>
    <message>
        <source>Move Songs</source>
        <translation>Titel verschieben</translation>
    </message>
    <message>
        <source>It was written by a newer version of Storyboard.</source>
        <translation>Es wurde von einer neueren Fassung von Storyboard geschrieben.</translation>
    </message>
    <message>
        <source>Add Songs…</source>
        <translation>Musik hinzufügen …</translation>
    </message>
    <message>
        <source>Add Songs</source>
        <translation>Musik hinzufügen</translation>
    </message>
    <message>
        <source>Songs (*.mp3 *.m4a *.aac *.wav *.flac *.ogg)</source>
        <translation>Musik (*.mp3 *.m4a *.aac *.wav *.flac *.ogg)</translation>
    </message>
    <message>
        <source>&amp;Title:</source>
        <translation>&amp;Titel:</translation>
    </message>
    <message>
        <source>&amp;Shows for:</source>
        <translation>&amp;Dauer:</translation>
    </message>
    <message>
        <source>T&amp;ransition:</source>
        <translation>&amp;Übergang:</translation>
    </message>
    <message>
        <source>&amp;Angle:</source>
        <translation>&amp;Winkel:</translation>
    </message>
    <message>
        <source> s</source>
        <translation> s</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Ohne</translation>
    </message>
    <message>
        <source>Dissolve</source>
        <translation>Überblenden</translation>
    </message>
    <message>
        <source>Push</source>
        <translation>Schieben</translation>
    </message>
    <message>
        <source>Wipe</source>
        <translation>Wischen</translation>
    </message>
    <message>
        <source>Change Title</source>
        <translation>Titel ändern</translation>
    </message>
    <message>
        <source>Change Duration</source>
        <translation>Dauer ändern</translation>
    </message>
    <message>
        <source>Change Transition</source>
        <translation>Übergang ändern</translation>
    </message>
    <message>
        <source>Turn Slides</source>
        <translation>Folien drehen</translation>
    </message>
    <message>
        <source>&amp;Slides</source>
        <translation>&amp;Folien</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Widerrufen</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>Wieder&amp;holen</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>&amp;Ausschneiden</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einsetzen</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>Add &amp;Photos…</source>
        <translation>&amp;Fotos hinzufügen …</translation>
    </message>
    <message>
        <source>Add Photos</source>
        <translation>Fotos hinzufügen</translation>
    </message>
    <message>
        <source>Photos (*.jpg *.jpeg *.png *.heic *.avif *.tif *.tiff *.gif *.webp *.bmp)</source>
        <translation>Fotos (*.jpg *.jpeg *.png *.heic *.avif *.tif *.tiff *.gif *.webp *.bmp)</translation>
    </message>
    <message>
        <source>Add &amp;Songs…</source>
        <translation>&amp;Musik hinzufügen …</translation>
    </message>
    <message>
        <source>Move &amp;Earlier</source>
        <translation>Nach &amp;vorn</translation>
    </message>
    <message>
        <source>Move &amp;Later</source>
        <translation>Nach &amp;hinten</translation>
    </message>
    <message>
        <source>Turn &amp;Right</source>
        <translation>Nach &amp;rechts drehen</translation>
    </message>
    <message>
        <source>T&amp;urn Left</source>
        <translation>Nach &amp;links drehen</translation>
    </message>
    <message>
        <source>Neither a photo nor a song: %1</source>
        <translation>Weder Foto noch Musik: %1</translation>
    </message>
    <message>
        <source>Add Slides</source>
        <translation>Folien hinzufügen</translation>
    </message>
    <message>
        <source>The slides cannot be read.</source>
        <translation>Die Folien lassen sich nicht lesen.</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einsetzen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Slide</source>
        <translation>Folie</translation>
    </message>
    <message>
        <source>Several titles</source>
        <translation>Mehrere Titel</translation>
    </message>
    <message>
        <source>It is no storyboard.</source>
        <translation>Es ist kein Storyboard.</translation>
    </message>
    <message numerus="yes">
        <source>%n slides</source>
        <translation>
            <numerusform>%n Folie</numerusform>
            <numerusform>%n Folien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n Slides</source>
        <translation>
            <numerusform>%n Folie</numerusform>
            <numerusform>%n Folien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n songs</source>
        <translation>
            <numerusform>%n Musikstück</numerusform>
            <numerusform>%n Musikstücke</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n photos</source>
        <translation>
            <numerusform>%n Foto</numerusform>
            <numerusform>%n Fotos</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n ausgewählt</numerusform>
            <numerusform>%n ausgewählt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read as photos.</source>
        <translation>
            <numerusform>%n Datei lässt sich nicht als Foto lesen.</numerusform>
            <numerusform>%n Dateien lassen sich nicht als Fotos lesen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Open Photo &amp;Folder…</source>
        <translation>Foto&amp;ordner öffnen …</translation>
    </message>
    <message>
        <source>Drop songs here.</source>
        <translation>Ziehen Sie Musikstücke hierher.</translation>
    </message>
    <message>
        <source>Several</source>
        <translation>Mehrere</translation>
    </message>
    <message>
        <source>%1, the photo is missing</source>
        <translation>%1, das Foto fehlt</translation>
    </message>
</context>
</TS>
