<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>lexon</name>
    <message>
        <source>%1 cannot be opened: the desktop has no program for it.</source>
        <translation>%1 lässt sich nicht öffnen: der Desktop hat kein Programm dafür.</translation>
    </message>
    <message>
        <source>The manual is not installed. On Debian it is in the package lexon-doc.</source>
        <translation>Das Handbuch ist nicht installiert. In Debian ist es im Paket lexon-doc.</translation>
    </message>
    <message>
        <source>There is no such file.</source>
        <translation>Diese Datei gibt es nicht.</translation>
    </message>
    <message>
        <source>This is a folder.</source>
        <translation>Das ist ein Ordner.</translation>
    </message>
    <message>
        <source>The path has more than 260 characters.</source>
        <translation>Der Pfad hat mehr als 260 Zeichen.</translation>
    </message>
    <message>
        <source>This is the text of a dictionary: &quot;lexon-dict build&quot; makes the dictionary (.dic) of it.</source>
        <translation>Das ist der Text eines Wörterbuchs: „lexon-dict build“ macht daraus das Wörterbuch (.dic).</translation>
    </message>
    <message>
        <source>This is no dictionary, no rules and no graphs. Browse takes it all the same.</source>
        <translation>Das ist kein Wörterbuch, keine Regeln und keine Graphen. Durchsuchen nimmt die Datei trotzdem.</translation>
    </message>
    <message>
        <source>Another file of its kind has come before it: %1</source>
        <translation>Eine andere Datei dieser Art war schon da: %1</translation>
    </message>
</context>
<context>
    <name>lexon::AboutDialog</name>
    <message>
        <source>About Lexon</source>
        <translation>Über Lexon</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>A rule-driven natural-language generator</source>
        <translation>Ein regelgesteuerter Generator natürlicher Sprache</translation>
    </message>
</context>
<context>
    <name>lexon::MainDialog</name>
    <message>
        <source>&amp;Render</source>
        <translation>&amp;Rendern</translation>
    </message>
    <message>
        <source>&amp;Setting</source>
        <translation>&amp;Einstellung</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>A rule-driven natural-language generator</source>
        <translation>Ein regelgesteuerter Generator natürlicher Sprache</translation>
    </message>
    <message>
        <source>Press Render to start.</source>
        <translation>Rendern startet den Lauf.</translation>
    </message>
    <message>
        <source>Name the files under Setting, then press Render.</source>
        <translation>Nennen Sie unter Einstellung die Dateien und drücken Sie dann Rendern.</translation>
    </message>
    <message>
        <source>Not named yet: %1</source>
        <translation>Noch nicht genannt: %1</translation>
    </message>
    <message>
        <source>Starts the run</source>
        <translation>Startet den Lauf</translation>
    </message>
    <message>
        <source>Names the files of the run, and how many sentences</source>
        <translation>Nennt die Dateien des Laufs und die Zahl der Sätze</translation>
    </message>
    <message>
        <source>Ends the program without a run</source>
        <translation>Beendet das Programm ohne einen Lauf</translation>
    </message>
    <message>
        <source>&amp;About Lexon...</source>
        <translation>&amp;Über Lexon …</translation>
    </message>
    <message>
        <source>&amp;Manual</source>
        <translation>&amp;Handbuch</translation>
    </message>
</context>
<context>
    <name>lexon::PathEdit</name>
    <message>
        <source>This is a folder.</source>
        <translation>Das ist ein Ordner.</translation>
    </message>
    <message>
        <source>There is no such file.</source>
        <translation>Diese Datei gibt es nicht.</translation>
    </message>
    <message>
        <source>There is no such folder.</source>
        <translation>Diesen Ordner gibt es nicht.</translation>
    </message>
    <message>
        <source>Something is wrong with this path</source>
        <translation>Mit diesem Pfad stimmt etwas nicht</translation>
    </message>
</context>
<context>
    <name>lexon::ProgressDialog</name>
    <message>
        <source>sentence no.</source>
        <translation>Satz Nr.</translation>
    </message>
    <message>
        <source>converting/loading rules</source>
        <translation>Regeln werden übersetzt/geladen</translation>
    </message>
    <message>
        <source>number of the sentence</source>
        <translation>Nummer des Satzes</translation>
    </message>
    <message>
        <source>elapsed time in seconds</source>
        <translation>vergangene Zeit in Sekunden</translation>
    </message>
    <message>
        <source>seconds that a sentence may take</source>
        <translation>Sekunden, die ein Satz dauern darf</translation>
    </message>
    <message>
        <source>%1 of %2 sentences, %3 failed</source>
        <translation>%1 von %2 Sätzen, %3 gescheitert</translation>
    </message>
    <message>
        <source>how far the run has come</source>
        <translation>wie weit der Lauf gekommen ist</translation>
    </message>
    <message>
        <source>%1 a second, %2 left</source>
        <translation>%1 in der Sekunde, noch %2</translation>
    </message>
    <message>
        <source>rate of the run</source>
        <translation>Geschwindigkeit des Laufs</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>Lauf</translation>
    </message>
    <message>
        <source>Progress of the run</source>
        <translation>Fortschritt des Laufs</translation>
    </message>
    <message>
        <source>Ends the run; what has been rendered is kept</source>
        <translation>Beendet den Lauf; was fertig ist, bleibt</translation>
    </message>
    <message>
        <source>elapsed time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>/ max time per sen</source>
        <translation>/ Höchstzeit je Satz</translation>
    </message>
    <message>
        <source>0 : limitless</source>
        <translation>0 : ohne Grenze</translation>
    </message>
    <message>
        <source>%1 sentences, %2 failed</source>
        <translation>%1 Sätze, %2 gescheitert</translation>
    </message>
    <message>
        <source>%1 a second, %2 gone</source>
        <translation>%1 in der Sekunde, seit %2</translation>
    </message>
</context>
<context>
    <name>lexon::SettingDialog</name>
    <message>
        <source>Dictionary Files (*.dic)
All Files (*.*)</source>
        <translation>Wörterbücher (*.dic)
Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>Rule Files (*.rul;*.txt)
All Files (*.*)
Grammar Sources (*.lxr)</source>
        <translation>Regeldateien (*.rul;*.txt)
Alle Dateien (*.*)
Grammatikquellen (*.lxr)</translation>
    </message>
    <message>
        <source>Text Files (*.txt)
All Files (*.*)</source>
        <translation>Textdateien (*.txt)
Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>Text Files (*.txt; *.trc)
All Files (*.*)</source>
        <translation>Textdateien (*.txt; *.trc)
Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>&amp;W Dictionary</source>
        <translation>&amp;W-Wörterbuch</translation>
    </message>
    <message>
        <source>The word dictionary: the words of the language. lexon-dict build makes it; its index lies in the same folder.</source>
        <translation>Das Wortwörterbuch: die Wörter der Sprache. lexon-dict build macht es; sein Index liegt im selben Ordner.</translation>
    </message>
    <message>
        <source>C&amp;R Dictionary</source>
        <translation>C&amp;R-Wörterbuch</translation>
    </message>
    <message>
        <source>The co-occurrence dictionary: which words go with which. A run without one leaves this empty.</source>
        <translation>Das Kookkurrenz-Wörterbuch: welche Wörter zusammengehen. Ein Lauf ohne eines lässt das Feld leer.</translation>
    </message>
    <message>
        <source>&amp;KB Dictionary</source>
        <translation>&amp;KB-Wörterbuch</translation>
    </message>
    <message>
        <source>Not in use.</source>
        <translation>Nicht in Gebrauch.</translation>
    </message>
    <message>
        <source>R&amp;ules</source>
        <translation>Re&amp;geln</translation>
    </message>
    <message>
        <source>The rules, as text, as a grammar source (.lxr) or compiled (.rul). Compiled files are written beside the text.</source>
        <translation>Die Regeln, als Text, als Grammatikquelle (.lxr) oder übersetzt (.rul). Übersetzte Dateien werden neben den Text geschrieben.</translation>
    </message>
    <message>
        <source>&amp;Input File</source>
        <translation>&amp;Eingabedatei</translation>
    </message>
    <message>
        <source>The graphs that sentences are made of.</source>
        <translation>Die Graphen, aus denen Sätze werden.</translation>
    </message>
    <message>
        <source>&amp;Output File</source>
        <translation>&amp;Ausgabedatei</translation>
    </message>
    <message>
        <source>What the run writes: sentences, messages and the trace. A file that is there is emptied first.</source>
        <translation>Was der Lauf schreibt: Sätze, Meldungen und die Spur. Eine Datei, die es schon gibt, wird zuerst geleert.</translation>
    </message>
    <message>
        <source>&amp;Start Number of Sentence</source>
        <translation>Nummer des ersten &amp;Satzes</translation>
    </message>
    <message>
        <source>The first sentence to render, counted from 1. The arrows go to 100; any number can be typed.</source>
        <translation>Der erste Satz, gezählt von 1. Die Pfeile gehen bis 100; eintippen lässt sich jede Zahl.</translation>
    </message>
    <message>
        <source>&amp;Number of Sentences</source>
        <translation>A&amp;nzahl der Sätze</translation>
    </message>
    <message>
        <source>0 : all</source>
        <translation>0 : alle</translation>
    </message>
    <message>
        <source>How many sentences; 0 is all up to the end of the input. The arrows go to 100; any number can be typed.</source>
        <translation>Wie viele Sätze; 0 ist alle bis zum Ende der Eingabe. Die Pfeile gehen bis 100; eintippen lässt sich jede Zahl.</translation>
    </message>
    <message>
        <source>Max &amp;Time per Sentence</source>
        <translation>Höchst&amp;zeit je Satz</translation>
    </message>
    <message>
        <source>seconds, 0 : limitless</source>
        <translation>Sekunden, 0 : ohne Grenze</translation>
    </message>
    <message>
        <source>A sentence that takes more seconds is given up, and the run goes on with the next; 0 is no limit. The arrows go to 100; any number can be typed.</source>
        <translation>Ein Satz, der länger dauert, wird aufgegeben, und der Lauf geht mit dem nächsten weiter; 0 ist ohne Grenze. Die Pfeile gehen bis 100; eintippen lässt sich jede Zahl.</translation>
    </message>
    <message>
        <source>How much of the work is written into the output: 0 is sentences alone, 4 is all. A whole trace is large: try it on a sentence or two.</source>
        <translation>Wie viel von der Arbeit in die Ausgabe kommt: 0 sind nur die Sätze, 4 ist alles. Eine ganze Spur ist groß: versuchen Sie sie mit ein, zwei Sätzen.</translation>
    </message>
    <message>
        <source>Converts the rules, and stops before the first sentence.</source>
        <translation>Übersetzt die Regeln und hört vor dem ersten Satz auf.</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>&amp;Browse</source>
        <translation>&amp;Durchsuchen</translation>
    </message>
    <message>
        <source>Browse for %1</source>
        <translation>Durchsuchen: %1</translation>
    </message>
    <message>
        <source>Output Trace &amp;Level</source>
        <translation>S&amp;tufe der Spur</translation>
    </message>
    <message>
        <source>0 : text alone</source>
        <translation>0 : nur Text</translation>
    </message>
    <message>
        <source>Rules &amp;Conversion Only</source>
        <translation>Regeln nur &amp;übersetzen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Opens the manual at this dialog</source>
        <translation>Öffnet das Handbuch bei diesem Dialog</translation>
    </message>
    <message>
        <source>Recent &amp;Projects</source>
        <translation>Letzte &amp;Projekte</translation>
    </message>
    <message>
        <source>Fills the fields with the settings of an earlier run</source>
        <translation>Füllt die Felder mit den Einstellungen eines früheren Laufs</translation>
    </message>
    <message>
        <source>&amp;Forget These</source>
        <translation>Diese &amp;vergessen</translation>
    </message>
    <message>
        <source>%1 is there already. Shall the run write over it?</source>
        <translation>%1 gibt es schon. Soll der Lauf die Datei überschreiben?</translation>
    </message>
</context>
<context>
    <name>lexon::SummaryDialog</name>
    <message>
        <source>failed</source>
        <translation>gescheitert</translation>
    </message>
    <message>
        <source>over time</source>
        <translation>über der Zeit</translation>
    </message>
    <message>
        <source>The run has ended</source>
        <translation>Der Lauf ist zu Ende</translation>
    </message>
    <message>
        <source>Sentences:</source>
        <translation>Sätze:</translation>
    </message>
    <message>
        <source>Output:</source>
        <translation>Ausgabe:</translation>
    </message>
    <message numerus="yes">
        <source>and %n more, on standard error</source>
        <translation>
            <numerusform>und ein weiterer, auf der Fehlerausgabe</numerusform>
            <numerusform>und %n weitere, auf der Fehlerausgabe</numerusform>
        </translation>
    </message>
    <message>
        <source>Notes:</source>
        <translation>Hinweise:</translation>
    </message>
    <message>
        <source>Sentences that were not rendered</source>
        <translation>Sätze, die nicht entstanden sind</translation>
    </message>
    <message>
        <source>No.</source>
        <translation>Nr.</translation>
    </message>
    <message>
        <source>Sentence</source>
        <translation>Satz</translation>
    </message>
    <message>
        <source>What happened</source>
        <translation>Was geschah</translation>
    </message>
    <message>
        <source>Seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>Open &amp;Output</source>
        <translation>Aus&amp;gabe öffnen</translation>
    </message>
    <message>
        <source>Open &amp;Page</source>
        <translation>&amp;Seite öffnen</translation>
    </message>
    <message>
        <source>Start &amp;Again</source>
        <translation>&amp;Neu starten</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Opens the output with the program that the desktop has for texts</source>
        <translation>Öffnet die Ausgabe mit dem Programm, das der Desktop für Texte hat</translation>
    </message>
    <message>
        <source>Shows how the sentence in the list, or the first ones, came about</source>
        <translation>Zeigt, wie der Satz in der Liste oder die ersten Sätze entstanden sind</translation>
    </message>
    <message>
        <source>Ends this program and starts it anew with the same settings</source>
        <translation>Beendet dieses Programm und startet es mit denselben Einstellungen neu</translation>
    </message>
    <message>
        <source>The output could not be written whole.</source>
        <translation>Die Ausgabe konnte nicht ganz geschrieben werden.</translation>
    </message>
    <message>
        <source>The run was cancelled. What was rendered before is kept.</source>
        <translation>Der Lauf wurde abgebrochen. Was vorher fertig war, bleibt.</translation>
    </message>
    <message>
        <source>The rules could not be converted; the output says why.</source>
        <translation>Die Regeln konnten nicht übersetzt werden; die Ausgabe sagt, warum.</translation>
    </message>
    <message>
        <source>The rules are converted.</source>
        <translation>Die Regeln sind übersetzt.</translation>
    </message>
    <message>
        <source>The run is done, but not every sentence could be rendered.</source>
        <translation>Der Lauf ist fertig, aber nicht jeder Satz ist entstanden.</translation>
    </message>
    <message>
        <source>The input has no sentence there.</source>
        <translation>Die Eingabe hat dort keinen Satz.</translation>
    </message>
    <message>
        <source>All sentences are done.</source>
        <translation>Alle Sätze sind fertig.</translation>
    </message>
    <message>
        <source>%1 done</source>
        <translation>%1 fertig</translation>
    </message>
    <message>
        <source>%1 failed</source>
        <translation>%1 gescheitert</translation>
    </message>
    <message>
        <source>%1 over time</source>
        <translation>%1 über der Zeit</translation>
    </message>
    <message>
        <source>1 unclosed, in line %1</source>
        <translation>1 ohne Ende, in Zeile %1</translation>
    </message>
    <message>
        <source>%1 lines of graphs left out</source>
        <translation>%1 Zeilen von Graphen ausgelassen</translation>
    </message>
    <message>
        <source>; %1 seconds</source>
        <translation>; %1 Sekunden</translation>
    </message>
    <message>
        <source>%1 steps, %2 of them taken back.</source>
        <translation>%1 Schritte, davon %2 zurückgenommen.</translation>
    </message>
    <message>
        <source>Not in the dictionary: %1.</source>
        <translation>Nicht im Wörterbuch: %1.</translation>
    </message>
    <message>
        <source>Relations left over: %1.</source>
        <translation>Übrige Relationen: %1.</translation>
    </message>
    <message>
        <source>The page could not be made.</source>
        <translation>Die Seite konnte nicht erzeugt werden.</translation>
    </message>
</context>
</TS>
