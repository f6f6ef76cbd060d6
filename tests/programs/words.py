#!/usr/bin/env python3
"""Words from outside: what `lexon-dict find` finds, and what import and inflect make of lists. words.py PROGRAMS"""
import pathlib

import _table as table

ENTRIES = ("[Apfel]{} \"apple(>fruit)\" (N,M,SG) <D,0,0>;\n[gehen]{} \"go(>do)\" (V,BASE) <D,0,0>;\n"
           "[ging]{go} \"go(>do)\" (V,PAST,of(a, b)) <D,0,3>;\n[gingen]{go} \"go(>do)\" (V,PAST,PL) <D,0,9>;\n"
           "[Äpfel]{} \"apple(>fruit)\" (N,M,PL) <D,0,0>;\n")
APFEL, GEHEN, GING, GINGEN, AEPFEL = ENTRIES.splitlines(True)
NOTHING = "nothing is found\n"

# Conditions, what is found.
FINDS = [
    ("--attr PL", GINGEN + AEPFEL), ("--attr PL --attr N", AEPFEL), ("--attr V --attr ^PAST", GEHEN), ("--attr ^V --attr ^PL", APFEL),
    ("--attr P", ""), ("--attr ST", ""), (["--attr", "of(a, b)"], GING), ("--attr b)", ""), (["--attr", ""], ""),
    ("--prefix ge", GEHEN), ("--prefix g --attr PAST", GING + GINGEN), ("--prefix go --in cw", GEHEN + GING + GINGEN), (["--prefix", "", "--in", "id"], ENTRIES),
    ("--glob g*n", GEHEN + GINGEN), ("--glob ?pfel", APFEL + AEPFEL), ("--glob [ÄÖ]*", AEPFEL), ("--glob [!a-zA-Z]pf*", AEPFEL), ("--glob g?ng --glob *ng", GING),
    ("--glob *", ENTRIES), ("--glob g", ""), (["--glob", "*(>f*)", "--in", "cw"], APFEL + AEPFEL), ("--glob g*g*n*", GINGEN), ("--glob [", ""),
    ("--regex ^.pfel$", APFEL + AEPFEL), ("--regex ^g.*n$ --attr PAST", GINGEN), ("--regex Ä?pf", APFEL + AEPFEL), ("--regex ^[^A]p", AEPFEL), ("--regex g{2}", ""),
    ("--hw ging", GING), ("--cw go(>do)", GINGEN + GING + GEHEN), ("--cw go(>do) --attr PAST --prefix ging", GINGEN + GING), ("--hw ging --cw apple(>fruit)", ""),
    ("--glob * --limit 2", APFEL + GEHEN), ("--glob g* --count", "3\n"), ("--glob x --count", "0\n"),
]

UNIMORPH = "go\twent\tV;PST\r\ngo\tgoes\tV;PRS;NOM(3,SG)\ngo\tgone\tV;V.PTCP;PST\tgo|ne\n\ngo\twent\tV;PST;XX\ngo\tgo\tV;NFIN;YY;XX\nbad line\ngo\twent\tV;PST\n"
LTTOOLBOX = "house:house<n><sg>\nhouses:house<n><pl>\ndon't:>:do<vbdo><pres>+not<adv>\nwanna:want<vblex><pres>+to<pr>\nlook up:<:look# up<vblex><inf>\nx:>:y<n>\n3\\:4:3\\:4<num>\nno colon\nz:z<n\n"
CONLLU = ("# text\n1-2\tDu\t_\t_\t_\t_\t_\t_\t_\t_\n1\tDe\tde\tADP\t_\t_\t0\troot\t_\t_\n2\tle\tle\tDET\t_\tDefinite=Def|Gender=Masc\t1\tdet\t_\t_\n"
          "3\tle\tle\tDET\t_\tDefinite=Def|Gender=Masc\t1\tdet\t_\t_\n4\tParis\tParis\tPROPN\t_\tNew=Yes\t1\tx\t_\t_\n5\tx\t_\tX\t_\t_\t1\tx\t_\t_\n\n"
          "1\tÉté\tété\tNOUN\t_\tNumber=Sing\t0\troot\t_\t_\n\n1\tŻe\tże\tNOUN\t_\tNumber=Sing\t0\troot\t_\t_\n\n1\tParis\tParis\tPROPN\t_\tNew=Yes\t0\troot\t_\t_\nshort\n")
DATA = "  1 licence\n00000010 05 n 02 dog 0 domestic_dog 0 001 @ 1 n 0000 | a pet\n00000020 18 n 01 dog 1 000 | a fellow\nbad\n"
VERBS = "00000010 38 v 01 go 0 000 01 + 02 00 | move\n"
ADJECTIVES = "00000010 00 s 01 galore(ip) 0 000 | many\n"

FRAMES = """<frameset><predicate lemma="give_up"><roleset id="give_up.07"><aliases><alias pos="v">give_up</alias><alias pos="n">surrender</alias><alias pos="l">make_surrender</alias></aliases>
<roles><role n="0"/><role n="1" descr="thing given up"/><role n="2" descr="instrument"/><role n="3" f="GOL" descr="whom"/></roles>
<example><text>She gave up to sing</text><propbank><rel relloc="1">gave</rel><arg type="ARG0" start="0">She</arg><arg type="ARG1" start="3">to sing</arg></propbank></example>
<example><text>She gave up that</text><propbank><rel relloc="2">gave</rel><arg type="ARG1" start="3">that</arg></propbank></example></roleset>
<roleset id="fall.01"><aliases/><roles><role n="1" descr="thing falling"/><role n="2" descr="place fallen from"/></roles></roleset>
<roleset id="meet.02"><aliases/><roles><role n="0"/><role n="1" f="COM"/><role n="2" f="EXT"/><role n="3" f="LOC"/></roles></roleset>
<roleset id="pull.01"><aliases/><roles><role n="0"/><role n="1"/><role n="2" f="GOL" descr="direction"/><role n="3" f="MNR"/></roles>
<example><text>She pulled a door home a rope</text><propbank><rel relloc="1">pulled</rel><arg type="ARG0" start="0">She</arg><arg type="ARG1" start="2">a door</arg><arg type="ARG2" start="4">home</arg><arg type="ARG3" start="5">a rope</arg></propbank></example></roleset></predicate></frameset>"""


def entry(form, concept, attributes, frequency=0, language=".", ident=""):
    return f'[{form}]{{{ident}}} "{concept}" ({attributes}) <{language},{frequency},0>;\n'


# Words of the call, exit status, standard output, standard error.
IMPORTS = [
    (["--from", "unimorph", "u.tsv"], 1, entry("went", "go", "V,PAST") + entry("goes", "go", "V,PRES,S3") + entry("gone", "go", "V,PTCP") + entry("go", "go", "V,BASE"),
     "u.tsv:7: a line is LEMMA, FORM and FEATURES, with tabs between them\nthe table lacks XX, of 2 words\nthe table lacks YY, of 1 word\n4 entries, 2 repeated, 1 bad line\n"),
    (["--from", "unimorph", "u.tsv", "--table", "t.tsv", "--cw", "{lemma}(>{class})", "--id", "{lemma}", "--language", "E"], 1,
     entry("went", "go(>VB)", "VB,PAST", 0, "E", "go") + entry("goes", "go(>VB)", "VB,PRES,S3", 0, "E", "go"),
     "u.tsv:7: a line is LEMMA, FORM and FEATURES, with tabs between them\n2 entries, 2 repeated, 2 words left out, 1 bad line\n"),
    (["--from", "unimorph", "u.tsv", "--table", "bad.tsv"], 1, "", "bad.tsv:2: a row is FEATURES, a tab and ATTRIBUTES\n"),
    (["--from", "unimorph", "none.tsv"], 1, "", "none.tsv: cannot be opened: No such file or directory\n"),
    (["--from", "unimorph", "."], 1, "", ".: cannot be opened: Is a directory\n"),
    (["--from", "lttoolbox", "l.txt"], 1, entry("house", "house", "N,SG") + entry("houses", "house", "N,PL") + entry("look up", "look up", "V,BASE") + entry("3:4", "3:4", "NUM"),
     "l.txt:8: a line is FORM:LEMMA<TAG><TAG>\nl.txt:9: a tag is not closed: < stands without >\n4 entries, 3 words left out, 2 bad lines\n"),
    (["--from", "conllu", "c.conllu"], 1, entry("de", "de", "PREP", 1) + entry("le", "le", "DET,DEF,M", 2) + entry("Paris", "Paris", "PROPN", 2) + entry("été", "été", "N,SG", 1) + entry("że", "że", "N,SG", 1),
     "c.conllu:14: a line of a word has ten columns, with tabs between them\nthe table lacks New=Yes, of 1 word\n5 entries, 1 word left out, 1 bad line\n"),
    (["--from", "wordnet", "wn"], 1, entry("dog", "dog(>animal)", "N,ANIMAL") + entry("domestic dog", "domestic dog(>animal)", "N,ANIMAL") + entry("dog", "dog(>person)", "N,HUM")
     + entry("dogges", "dog(>animal)", "N,PL") + entry("dogges", "dog(>person)", "N,PL") + entry("go", "go(>motion)", "V") + entry("going", "go(>motion)", "V,ING")
     + entry("went", "go(>motion)", "V,IRREG") + entry("galore", "galore(>adj)", "ADJ,POSTPOS"),
     "wn/data.noun:4: not a synset of WordNet\n9 entries, 1 word left out, 1 bad line\n"),
    (["--from", "wordnet", "u.tsv"], 1, "", "u.tsv: not a file of WordNet that holds words: name data.noun and its like, or noun.exc, or their folder\n"),
    (["--from", "propbank", "frames"], 1, entry("give up", "give-up(>07)", "V,INF1,p2with,p3to,LVmake") + entry("surrender", "give-up(>07)", "N,NMZ,INF1,p2with,p3to,LVmake")
     + entry("fall", "fall(>01)", "V,SA1,p2from") + entry("meet", "meet(>02)", "V,p1with,p2by,p3in") + entry("pull", "pull(>01)", "V,p2to,p3with"),
     "frames/sing.xml:2: the file is left out, as it is not well-formed: Start-end tags mismatch\n5 entries, 1 bad line\n"),
    (["--from", "propbank", "wn"], 1, "", "wn: no frame file (.xml) is in this folder\n"),
    (["--from", "unimorph"], 2, "", "no list is named: write it behind the options, - for standard input\n"),
]

PARADIGMS = """; vowel harmony
letters V a e ı i o ö u ü
letters B a ı o u
pass
change A -> a / B C* _
change A -> e
change I -> ı / (a ı) C* _
change I -> u / (o u) C* _
change I -> ü / (ö ü) C* _
change I -> i
change D -> t / (f s t k ç ş h p) _
change D -> d
change 0 -> y / V + _ V
pass
change (k t) -> (ğ d) / V _ + V
change ^ -> 0
features\tN1\tN2
N,SG\t0\t0
N,PL\t+lAr\t-
N,ACC\t+I\t@other+I +yI
N,LOC\t+DA\t-
"""
PARADIGMS = PARADIGMS.replace("letters B a ı o u\n", "letters B a ı o u\nletters C b c ç d f g ğ h j k l m n p r s ş t v y z\n")
STEMS = "stem\tclass\tconcept\tattributes\tN,LOC\tother\tpriority\nev\tN1\thouse(>place)\tBIG\ngöz\tN1\n; a comment\nkitap\tN1\t\t\t-\nköpek\tN1\t\t\t\t\t7\nsu\tN2\t\t\tsuda\tsuy\nat\tN3\nyol\tN2\nodun\tN1\t\t\t\t\t300\n"
FORMS = [("ev", "house(>place)", "N,SG,BIG"), ("evler", "house(>place)", "N,PL,BIG"), ("evi", "house(>place)", "N,ACC,BIG"), ("evde", "house(>place)", "N,LOC,BIG"),
         ("göz", "göz", "N,SG"), ("gözler", "göz", "N,PL"), ("gözü", "göz", "N,ACC"), ("gözde", "göz", "N,LOC"),
         ("kitap", "kitap", "N,SG"), ("kitaplar", "kitap", "N,PL"), ("kitapı", "kitap", "N,ACC")]
DOG = [("köpek", "N,SG"), ("köpekler", "N,PL"), ("köpeği", "N,ACC"), ("köpekte", "N,LOC")]
WATER = [("su", "N,SG"), ("suyu", "N,ACC"), ("suyu", "N,ACC"), ("suda", "N,LOC")]
INFLECTED = "".join(entry(*form) for form in FORMS) + "".join(entry(form, "köpek", attributes).replace(",0>", ",7>") for form, attributes in DOG) + \
    entry("su", "su", "N,SG") + entry("suyu", "su", "N,ACC") + entry("suda", "su", "N,LOC") + entry("yol", "yol", "N,SG")
# What stands in the file of paradigms or of stems, and what is told.
WRONG = [
    ("p", "change a b\n", "p:1: write change FROM -> TO, or change FROM -> TO / LEFT _ RIGHT\n"), ("p", "change a -> b / c\n", "p:1: the context has no place: write LEFT _ RIGHT\n"),
    ("p", "change (a b) -> (c d e)\n", "p:1: the sets on both sides of -> have not the same number of letters\n"),
    ("p", "change 0 -> x\n", "p:1: what is put in needs a context: write change 0 -> TO / LEFT _ RIGHT\n"), ("p", "change a b -> c\n", "p:1: letters are missing here, without blanks between them: write 0 for none\n"),
    ("p", "change a -> b / ab* _\n", "p:1: ? and * stand behind one letter or a set: part the letters with blanks\n"), ("p", "letters V\n", "p:1: write letters NAME a b c\n"),
    ("p", "letters V ab\n", "p:1: a set has single letters, with blanks between them\n"), ("p", "letters V a\nletters V b\n", "p:2: the set V is there already: choose another name\n"),
    ("p", "N,SG\t0\n", "p:1: a line is letters, pass, change, the header of a table, or a row of one\n"), ("p", "; no\n", "p:1: there is no table: its first line is \"features\" and the classes, with tabs between\n"),
    ("p", "features\tA\tA\n", "p:1: the class A has a table already\n"), ("p", "features\tA\nN\t0\t0\n", "p:2: this row has 2 endings, and the table 1 classes: a tab stands between them, and - for no form\n"),
    ("p", "features\tA\nN\t\n", "p:2: an ending is missing here: write 0 for the stem alone, - for no form\n"),
    ("s", "stem\tclass\tx\n", "s:1: nothing asks for the column \"x\": there are stem, class, concept, attributes, gloss, priority, frequency, the stems that endings name with @, and the attributes of rows\n"),
    ("s", "stem\n", "s:1: the first line names the columns, with tabs between; stem and class must be among them\n"), ("s", "stem\tclass\tstem\n", "s:1: two columns \"stem\": rename one\n"),
]

with table.folder() as name:
    folder = pathlib.Path(name)
    (folder / "wn").mkdir()
    (folder / "frames").mkdir()
    for file, text in {"entries.txt": ENTRIES, "u.tsv": UNIMORPH, "l.txt": LTTOOLBOX, "c.conllu": CONLLU, "t.tsv": "# mine\nV\tVB\nV;PRS;NOM(3,SG)\tVB,PRES,S3\nV;V.PTCP\t-\nNFIN\t-\nXX\t\n",
                       "bad.tsv": "V\tVB\nV\n", "wn/data.noun": DATA, "wn/noun.exc": "dogges dog\ncattes cat\n", "wn/data.verb": VERBS, "wn/verb.exc": "going go\nwent go\n",
                       "wn/data.adj": ADJECTIVES, "wn/data.adv": "", "frames/give_up.xml": FRAMES, "frames/sing.xml": "<frameset>\n</predicate>", "p.txt": PARADIGMS, "s.tsv": STEMS}.items():
        (folder / file).write_text(text)
    (folder / "twice.txt").write_text(GING + "; no\n" + GEHEN + GING + GING.replace("PAST", "PRES") + GING)
    table.run("lexon-dict", "build", "entries.txt", "words.dic", folder=folder)
    for words, out in FINDS:
        made = table.run("lexon-dict", "find", "words.dic", *(words.split() if isinstance(words, str) else words), folder=folder)
        nothing = out in ("", "0\n")
        table.check(f"find {words}", (made.returncode, made.stdout, made.stderr), (int(nothing), out, NOTHING if nothing else ""))
    made = table.run("lexon-dict", "find", "words.dic", "--regex", "(", folder=folder)
    table.check("an expression that is none", (made.returncode, made.stdout, made.stderr[:9]), (1, "", "--regex: "))
    made = table.run("lexon-dict", "build", "twice.txt", "twice.dic", folder=folder)
    warning = "twice.txt:{}: warning: this entry is that of line 1: strike one out, or the word is tried twice\n"
    table.check("repeated entries", (made.returncode, made.stdout, made.stderr), (0, "5 entries in twice.dic (3 blocks), index in twice.idx (2 blocks), 2 repeated\n", warning.format(4) + warning.format(6)))
    for words, status, out, error in IMPORTS:
        made = table.run("lexon-dict", "import", *words, folder=folder)
        table.check(f"import {words}", made.stdout, out)
        table.check(f"import {words}", (made.returncode, made.stderr), (status, error))
    for form in ("unimorph", "lttoolbox", "conllu", "wordnet", "propbank"):
        made = table.run("lexon-dict", "import", "--from", form, "--show-table")
        rows = [row for row in made.stdout.splitlines() if row and not row.startswith("#")]
        table.check(f"the table of {form}", [row for row in rows if row.count("\t") != 1] + [row for row in rows if rows.count(row) > 1], [])
    made = table.run("lexon-dict", "inflect", "s.tsv", "-p", "p.txt", "-o", "made.txt", folder=folder)
    table.check("inflect", table.text(folder / "made.txt"), INFLECTED)
    table.check("inflect tells", (made.returncode, made.stderr), (1, "s.tsv:8: no table has the class \"N3\"\ns.tsv:9: the stem \"other\" is missing, which the endings of the class ask for\n"
                "s.tsv:10: a priority is a number to 255, a frequency any number\n19 entries of 5 stems, 1 repeated, 3 bad lines\n"))
    for which, text, error in WRONG:
        (folder / "p").write_text(text if which == "p" else "features\tA\nN\t0\n")
        (folder / "s").write_text(text if which == "s" else "stem\tclass\n")
        made = table.run("lexon-dict", "inflect", "s", "-p", "p", folder=folder)
        table.check(text, (made.returncode, made.stdout, made.stderr), (1, "", error))
table.finish()
