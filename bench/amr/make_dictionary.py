#!/usr/bin/env python3
"""Makes a dictionary for examples/amr-english from what a user has: PropBank frame files, a UniMorph table of English
verbs, and the files of WordNet 3.0.

    make_dictionary.py --frames FOLDER --forms unimorph.tsv --wordnet FOLDER --own entries.txt ... -o entries.txt

Entries of --own stand first and replace what would be made for the same concept word. The attributes are those of the
grammar: V with BASE PAST PTCP ING, N with PL, ADJ with CMP and SUP, ADV; HUM for people, TIM for times, MASS for what
is not counted; SA1 for a verb whose ARG1 is its subject, pNx for the preposition x of ARGn, INFn for an infinitive."""
import argparse
import collections
import pathlib
import re
import xml.etree.ElementTree as ET

VOWEL = re.compile(r"(?!(uni|use|usu|uti|eu|one\b|once|ubi|ura))(?:[aeiou]|hour|honest|honou?r|heir)", re.I)
PREPOSITIONS = set("about above across after against along among around as at before behind between by for from in into "
                   "like near of off on onto out over through to toward towards under upon with within without".split())
PARTICLES = set("about across ahead along apart around aside away back by down forward in off on out over through together "
                "up".split())
STATE_FILES = {31, 37, 42}
MASS_FILES = {7, 12, 27, 26}


def vowel(form):
    return ",VOW" if VOWEL.match(form) else ""


def short(word):
    """One syllable, or two that end in y."""
    return len(re.findall(r"[aeiouy]+", re.sub(r"e$", "", word))) <= 1


def plural(noun):
    if re.search(r"[^aeiou]y$", noun):
        return noun[:-1] + "ies"
    if re.search(r"(s|x|z|ch|sh)$", noun):
        return noun + "es"
    if re.search(r"man$", noun) and noun not in ("human", "german", "roman", "woman"):
        return noun[:-2] + "en"
    return noun + "s"


def double(word):
    return word + word[-1] if re.search(r"(^|[^aeiou])[aeiou][bdgklmnprt]$", word) and short(word) else word


def verb_rule(base):
    if base.endswith("e"):
        past, ing = base + "d", base[:-1] + "ing" if not base.endswith(("ee", "oe", "ye")) else base + "ing"
    elif re.search(r"[^aeiou]y$", base):
        past, ing = base[:-1] + "ied", base + "ing"
    else:
        past, ing = double(base) + "ed", double(base) + "ing"
    third = base[:-1] + "ies" if re.search(r"[^aeiou]y$", base) else \
        base + "es" if re.search(r"(s|x|z|ch|sh|o)$", base) else base + "s"
    return {"BASE": base, "PAST": past, "PTCP": past, "ING": ing, "S": third}


def compared(adjective, ending):
    if adjective.endswith("e"):
        return adjective + ending[1:]
    if re.search(r"[^aeiou]y$", adjective):
        return adjective[:-1] + "i" + ending
    return double(adjective) + ending


class Text:
    """What people write, from the examples of the frame files: how often a form comes, and with which article."""

    def __init__(self, folder):
        self.counts = collections.Counter()
        self.articles = collections.defaultdict(collections.Counter)
        self.prepositions = collections.defaultdict(collections.Counter)
        self.sentences = []
        for path in sorted(pathlib.Path(folder).glob("*.xml")) if folder else ():
            for text in re.findall(r"<text>([^<]*)</text>", path.read_text(encoding="utf-8", errors="replace")):
                words = text.lower().split()
                self.counts.update(words)
                self.sentences.append(words)

    def read_articles(self, nouns, adjectives):
        known = {"the": "the", "a": "a", "an": "a"}
        other = set("this that these those my your his her its our their some any no every each another 's all both many "
                    "few several".split())
        for words in self.sentences:
            for i, noun in enumerate(words):
                if noun not in nouns:
                    continue
                if i + 1 < len(words) and words[i + 1] in nouns:
                    continue
                j = i - 1
                while j >= 0 and i - j < 4 and words[j] in adjectives and words[j] not in known and words[j] not in other and words[j] not in PREPOSITIONS:
                    j -= 1
                before = words[j] if j >= 0 else ""
                self.articles[noun][known.get(before, "other" if before in other else "bare")] += 1
                if before in known and j > 0:
                    before = words[j - 1]
                if before in PREPOSITIONS:
                    self.prepositions[noun][before] += 1

    def noun_marks(self, noun, many):
        """MASS, AN, THE: what usually stands before the noun; PLUR: it is mostly a plural; INP, ONP, ATP: its preposition."""
        seen = self.articles[noun]
        marks = ""
        known = seen["the"] + seen["a"] + seen["bare"]
        if known >= 4:
            if seen["bare"] > 0.55 * known:
                marks += ",BARE"
            elif seen["a"] > seen["the"]:
                marks += ",AN"
            elif seen["the"] > 2.5 * seen["a"]:
                marks += ",THE"
        if self.counts[many] > 1.3 * self.counts[noun] and self.counts[many] > 3:
            marks += ",PLUR"
        if self.prepositions[noun]:
            best, count = max(((p, n) for p, n in self.prepositions[noun].items() if p in ("in", "on", "at")),
                              key=lambda one: one[1], default=("", 0))
            if count > 1:
                marks += f",{best.upper()}P"
        return marks


class Sources:
    def __init__(self, arguments):
        self.text = Text(arguments.frames)
        self.forms = collections.defaultdict(dict)
        if arguments.forms:
            tags = {"V;PST": "PAST", "V;V.PTCP;PST": "PTCP", "V;V.PTCP;PRS": "ING", "V;3;SG;PRS": "S", "V;PRS;NOM(3,SG)": "S"}
            for line in open(arguments.forms, encoding="utf-8"):
                lemma, form, features = line.rstrip("\n").split("\t")[:3]
                if features in tags:
                    self.forms[lemma].setdefault(tags[features], []).append(form)
        self.nouns, self.adjectives, self.adverbs, self.verbs = {}, set(), set(), set()
        self.states = set()
        self.governs = collections.defaultdict(collections.Counter)
        self.agents, self.nominal, self.adjectival, self.manner, self.opposite = ({} for _ in range(5))
        self.irregular = {"noun": {}, "adj": collections.defaultdict(list), "verb": {}}
        if arguments.wordnet:
            self.read_wordnet(pathlib.Path(arguments.wordnet))

    def read_wordnet(self, folder):
        synsets = {}
        for part in ("noun", "verb", "adj", "adv"):
            for line in open(folder / f"data.{part}", encoding="latin-1"):
                if line.startswith(" "):
                    continue
                fields = line.split(" | ")[0].split()
                count = int(fields[3], 16)
                words = [re.sub(r"\(.*\)", "", fields[4 + 2 * i]) for i in range(count)]
                at = 4 + 2 * count
                if part == "verb":
                    self.read_verb_frames(words, fields[at + 1 + 4 * int(fields[at]):])
                pointers = [fields[at + 1 + 4 * i:at + 5 + 4 * i] for i in range(int(fields[at]))]
                synsets[part, fields[0]] = int(fields[1]), words, pointers
            for line in open(folder / f"index.{part}", encoding="latin-1"):
                if line.startswith(" "):
                    continue
                fields = line.split()
                first = fields[-int(fields[2])]
                file = synsets[part, first][0]
                lemma = fields[0].replace("_", " ")
                written = next((w for w in synsets[part, first][1] if w.lower() == fields[0]), fields[0])
                if part == "noun":
                    self.nouns[lemma] = written.replace("_", " "), file, int(fields[-int(fields[2]) - 1])
                else:
                    if part == "verb" and file in STATE_FILES:
                        self.states.add(lemma)
                    {"verb": self.verbs, "adj": self.adjectives, "adv": self.adverbs}[part].add(lemma)
            if (folder / f"{part}.exc").exists() and part != "adv":
                for line in open(folder / f"{part}.exc"):
                    form, *lemmas = line.split()
                    for lemma in lemmas:
                        if part == "adj":
                            self.irregular["adj"][lemma].append(form)
                        else:
                            self.irregular[part].setdefault(lemma, form)
        self.tagged = collections.Counter()
        for line in open(folder / "cntlist.rev"):
            sense, _, number = line.split()
            lemma, _, rest = sense.partition("%")
            self.tagged[lemma.replace("_", " "), rest[0].replace("5", "3")] += int(number)
        parts = {"n": "noun", "v": "verb", "a": "adj", "s": "adj", "r": "adv"}
        for (part, _), (file, words, pointers) in synsets.items():
            for symbol, offset, category, place in pointers:
                here, there = int(place[:2], 16), int(place[2:], 16)
                if not here or not there or symbol not in ("+", "\\", "!"):
                    continue
                target_file, target_words, _ = synsets[parts[category], offset]
                source, target = words[here - 1].replace("_", " "), target_words[there - 1].replace("_", " ")
                if part == "verb" and category == "n":
                    table = self.agents if target_file == 18 else self.nominal
                    table.setdefault(source.lower(), []).append(target)
                if part == "noun" and category in "as" and symbol == "+":
                    self.adjectival.setdefault(source, []).append(target)
                if part == "adj" and category == "n" and symbol == "\\":
                    self.adjectival.setdefault(target, []).insert(0, source)
                if part == "adj" and symbol == "!" and re.fullmatch("(un|in|im|il|ir|dis)" + re.escape(source), target):
                    self.opposite[source] = target
                if part == "adv" and symbol == "\\":
                    # Of several adverbs the one that is made of the adjective: slowly, not slower.
                    if source.endswith("ly") or target.lower() not in self.manner:
                        self.manner[target.lower()] = source

    def read_verb_frames(self, words, fields):
        """The sentence frames of a verb sense: what a clause that it governs looks like."""
        shapes = {26: "THAT", 28: "INF", 33: "GER", 25: "BARE"}
        for number, word in zip(fields[2::3], fields[3::3]):
            shape = shapes.get(int(number))
            for i, verb in enumerate(words):
                if shape and int(word, 16) in (0, i + 1):
                    self.governs[verb.lower().replace("_", " ")].update([shape])

    def is_state(self, lemma, forms):
        """A state stands in the present, unless the examples tell of the verb in the past nearly always."""
        present, past = self.text.counts[forms["S"]], self.text.counts[forms["PAST"]]
        return lemma in self.states and not (present + past >= 8 and present < 0.13 * (present + past))

    def verb_forms(self, lemma):
        first, *rest = lemma.split(" ")
        forms = verb_rule(first)
        for tag, known in self.forms.get(first, {}).items():
            # Of several forms the one that people write.
            forms[tag] = max(known, key=lambda form: (self.text.counts[form], form == forms[tag]))
        tail = "".join(" " + word for word in rest)
        return {tag: form + tail for tag, form in forms.items()}


class Writer:
    def __init__(self, sources, out, taken):
        self.sources, self.out, self.taken, self.count = sources, out, taken, 0
        self.seen = set()

    def entry(self, form, concept, attributes):
        if concept in self.taken or (form, concept, attributes) in self.seen or '"' in form or "]" in form:
            return
        self.seen.add((form, concept, attributes))
        self.out.write(f'[{form}]{{}} "{concept}" ({attributes});\n')
        self.count += 1

    def verb(self, lemma, concept, more=""):
        first, _, particle = lemma.partition(" ")
        forms = self.sources.verb_forms(first if particle in PARTICLES else lemma)
        if particle in PARTICLES:
            more += f",ZP,Z{particle}"
        if self.sources.is_state(lemma, forms):
            more = ",STATV" + more
        third = forms["S"]
        ending = ",YS" if third.endswith("ies") else ",ES" if third.endswith("es") and not forms["BASE"].endswith("e") else ""
        for tag in ("BASE", "PAST", "PTCP", "ING"):
            self.entry(forms[tag], concept, f"V,{tag}{ending if tag == 'BASE' else ''}{more}")
        self.entry(third, concept, f"V,THIRD{more}")

    def noun(self, lemma, concept, more=""):
        written, file, _ = self.sources.nouns.get(lemma.lower(), (lemma, 0, 0))
        if lemma != lemma.lower():
            written = lemma
        kinds = {18: ",HUM", 28: ",TIM", 15: ",PLC"}.get(file, "") + (",MASS" if file in MASS_FILES else "")
        kinds += self.sources.text.noun_marks(lemma, self.sources.irregular["noun"].get(lemma) or plural(written))
        self.entry(written, concept, f"N{kinds}{vowel(written)}{more}")
        if written[:1].islower():
            many = self.sources.irregular["noun"].get(lemma) or plural(written)
            self.entry(many, concept, f"N,PL{kinds}{vowel(many)}{more}")

    def adjective(self, lemma, concept, more=""):
        if opposite := self.sources.opposite.get(lemma):
            self.entry(opposite, concept, f"UN,UNADJ{vowel(opposite)}")
            if adverb := self.sources.manner.get(opposite):
                self.entry(adverb, concept, f"UN,UNADV{vowel(adverb)}")
        self.entry(lemma, concept, f"ADJ{vowel(lemma)}{more}")
        exceptions = [f for f in self.sources.irregular["adj"].get(lemma, ()) if re.search(r"(r|st|e)$", f)]
        grades = {"CMP": [f for f in exceptions if f.endswith(("r", "e"))], "SUP": [f for f in exceptions if f.endswith("st")]}
        if not exceptions and (short(lemma) or lemma.endswith("y")) and lemma.isalpha() and len(lemma) < 8:
            grades = {"CMP": [compared(lemma, "er")], "SUP": [compared(lemma, "est")]}
        for tag, forms in grades.items():
            for form in forms[:1]:
                self.entry(form, concept, f"ADJ,{tag}{vowel(form)}{more}")
        if adverb := self.sources.manner.get(lemma):
            self.entry(adverb, concept, f"ADV{',LY' * adverb.endswith('ly')}{vowel(adverb)}{more}")


def surface(lemma):
    return lemma.replace("_", " ").replace("-", " ").strip()


def clause_shapes(counts, frames):
    """What a clause in the place of ARG1 is: as in the examples of the frame files and as WordNet says of the verb."""
    shapes = ("INF", "GER", "THAT")
    seen, known = (max(1, sum(table[shape] for shape in shapes)) for table in (counts, frames))
    score = {shape: counts[shape] / seen + frames[shape] / known for shape in shapes}
    found = [shape + "1" for shape in ("INF", "GER") if score[shape] and score[shape] >= 0.3 * score["THAT"]]
    return found + ["THAT1"] * (score["THAT"] > max(score["INF"], score["GER"])) + ["BARE1"] * (frames["BARE"] > 0)


KINDS = [("from", r"source|giver|seller|start"), ("for", r"benefactive|beneficiary|price|reason"), ("with", r"instrument"),
         ("about", r"topic|subject matter"), ("to", r"recipient|hearer|listener|destination|goal")]


def told_preposition(description, lemma, is_object):
    """The preposition that the description of a role gives: "thing listened to", "instrument"; "" for none."""
    words = re.findall(r"[a-z]+", description.lower())
    if not words:
        return ""
    if words[-1] in PREPOSITIONS - {"off", "around"} and (not is_object or any(w[:3] == lemma[:3] for w in words)):
        return "" if words[-1] in lemma.split() else words[-1]
    if is_object:
        return ""
    if words[0] in PREPOSITIONS:
        return words[0]
    return next((p for p, kind in KINDS if re.search(kind, description.lower())), "")


def patterns(roleset, sources, lemma):
    """How a frame is built, by its examples: the subject where there is no agent, and what introduces each argument."""
    introduced = collections.defaultdict(collections.Counter)
    subject = collections.Counter()
    roles = {role.get("n").upper() for role in roleset.iter("role")}
    forms = {form.split(" ")[0] for form in sources.verb_forms(lemma).values()} | {lemma}
    for example in roleset.iter("example"):
        annotation = example.find("propbank")
        if annotation is None:
            continue
        rel = annotation.find("rel")
        text = (example.findtext("text") or "").split()
        place = (rel.get("relloc") or "").split() if rel is not None else []
        if not place or not place[0].isdigit() or (rel.text or "").lower().split(" ")[0] not in forms:
            continue
        verb = int(place[0])
        spans = {}
        for arg in annotation.iter("arg"):
            kind, start = arg.get("type", ""), arg.get("start", "?")
            if re.fullmatch(r"ARG[0-6]", kind) and start.isdigit():
                spans[kind] = int(start), (arg.text or "").split()
        before = text[max(0, verb - 2):verb]
        is_passive = any(w.lower() in "is are was were be been being 's get got gets".split() for w in before) and \
            (rel.text or "").endswith(("ed", "en", "t", "d", "n"))
        if "ARG0" not in spans and "ARG1" in spans and spans["ARG1"][0] < verb:
            subject["passive" if is_passive else "active"] += 1
        subject["agent"] += "ARG0" in spans
        for kind, (start, words) in spans.items():
            if start < verb or not words:
                continue
            first = words[0].lower()
            if first == "to" and len(words) > 1 and words[1] in sources.forms:
                introduced[kind]["INF"] += 1
            elif first in PREPOSITIONS:
                introduced[kind][first] += 1
            elif first == "that":
                introduced[kind]["THAT"] += 1
            elif first.endswith("ing"):
                introduced[kind]["GER"] += 1
            else:
                introduced[kind]["NP"] += 1
    attributes = []
    is_alone = "0" not in roles and "1" in roles and subject["passive"] <= subject["active"]
    is_often = subject["active"] >= 2 and subject["active"] > 2 * subject["passive"] and 2 * subject["active"] >= subject["agent"]
    if is_alone or is_often:
        attributes.append("SA1")
    defaults = {"GOL": "to", "DIR": "from"}
    tags = {role.get("n").upper(): role.get("f", "") for role in roleset.iter("role")}
    described = {role.get("n").upper(): role.get("descr", "") for role in roleset.iter("role")}
    for n in "12345":
        counts = introduced.get("ARG" + n)
        if n == "1":
            attributes += clause_shapes(counts or collections.Counter(), sources.governs[lemma])
        if not counts:
            told = told_preposition(described.get(n, ""), lemma, n == "1") or (n != "1" and defaults.get(tags.get(n)))
            if told:
                attributes.append(f"p{n}{told}")
            continue
        if n != "1":
            attributes += [shape + n for shape in ("INF", "GER") if counts[shape] and counts[shape] >= counts["THAT"]]
            if counts["THAT"] > counts["INF"] + counts["GER"]:
                attributes.append("THAT" + n)
        best, _ = max(((k, v) for k, v in counts.items() if k not in ("INF", "THAT", "GER")), key=lambda kv: kv[1],
                      default=("", 0))
        if best and best != "NP":
            attributes.append(f"p{n}{best}")
        if n == "1" and best != "NP" and attributes and attributes[-1].startswith("p1"):
            # An object is a plain noun, unless the examples leave no doubt.
            if counts[best] < 2 or 10 * counts[best] < 7 * sum(counts.values()):
                attributes.pop()
        elif best == "NP" and n == "2":
            attributes.append("NP2")
    return "".join("," + a for a in attributes)


def frames(folder, writer, sources):
    known = set()
    for path in sorted(pathlib.Path(folder).glob("*.xml")):
        try:
            root = ET.parse(path).getroot()
        except ET.ParseError as error:
            print(f"{path}: left out: {error}")
            continue
        for predicate in root.iter("predicate"):
            for roleset in predicate.iter("roleset"):
                name, _, sense = roleset.get("id").rpartition(".")
                concept = f"{name.replace('_', '-')}(>{sense})"
                aliases = [(a.get("pos"), a.text.strip()) for a in roleset.iter("alias") if a.text]
                lemma = surface(name)
                verbs = [surface(text) for pos, text in aliases if pos == "v"]
                verb = lemma if lemma in verbs else verbs[0] if verbs else None
                if verb is None and not aliases and (lemma.partition(' ')[0] in sources.verbs or lemma in sources.verbs):
                    verb = lemma
                pattern = patterns(roleset, sources, verb or lemma)
                if verb:
                    writer.verb(verb, concept, pattern)
                for noun in list(dict.fromkeys(surface(t) for pos, t in aliases if pos == "n" and not t.endswith("ing")))[:1]:
                    writer.noun(noun, concept, ",NMZ" if verb else ",NMZ,QUAL")
                adjectives = [surface(t) for pos, t in aliases if pos == "j"]
                if adjectives and lemma in sources.adjectives:
                    adjectives = [lemma]
                for adjective in adjectives[:1]:
                    writer.adjective(adjective, concept, "" if verb else pattern)
                if verb:
                    for agent in agent_of(sources, verb)[:1]:
                        writer.noun(agent, concept, ",AGT")
                known.add(name)
    return known


def agent_of(sources, verb):
    stem = verb[:3]
    return sorted((a for a in sources.agents.get(verb, ()) if a.lower().startswith(stem)), key=len)


def lemmas(writer, sources):
    for lemma, (written, file, tags) in sources.nouns.items():
        rare = sources.tagged[lemma, "1"] * 3
        if sources.tagged[lemma, "3"] > rare or sources.tagged[lemma, "4"] > rare:
            continue
        if re.fullmatch(r"[A-Za-z][A-Za-z .'-]*", lemma):
            concept = written if written != lemma else lemma
            for key in {concept, concept.replace(" ", "-")} if written == lemma else {concept}:
                writer.noun(written, key)
    for noun, adjectives in sources.adjectival.items():
        if noun[:1].isupper():
            for adjective in adjectives[:1]:
                writer.entry(adjective, noun, f"ADJ{vowel(adjective)}")
    for lemma in sources.adjectives:
        if sources.tagged[lemma, "1"] > 20 * sources.tagged[lemma, "3"] or sources.tagged[lemma, "4"] > 20 * sources.tagged[lemma, "3"]:
            continue
        if re.fullmatch(r"[A-Za-z][A-Za-z -]*", lemma):
            for key in {lemma, lemma.replace(" ", "-")}:
                writer.adjective(lemma, key)
    for lemma in sources.adverbs:
        if re.fullmatch(r"[a-z][a-z -]*", lemma):
            for key in {lemma, lemma.replace(" ", "-")}:
                writer.entry(lemma, key, f"ADV{vowel(lemma)}")
    for lemma in sorted(sources.verbs | set(sources.forms)):
        if re.fullmatch(r"[a-z][a-z -]*", lemma):
            for key in {lemma, lemma.replace(" ", "-")}:
                writer.verb(lemma, key)
                for agent in agent_of(sources, lemma)[:1]:
                    writer.noun(agent, key, ",AGT")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--frames", help="the folder of PropBank's frame files")
    parser.add_argument("--forms", help="UniMorph's table of English verb forms")
    parser.add_argument("--wordnet", help="the folder with WordNet's data and index files")
    parser.add_argument("--own", action="append", default=[], help="entries that come first")
    parser.add_argument("-o", "--output", required=True)
    arguments = parser.parse_args()
    sources = Sources(arguments)
    taken = set()
    with open(arguments.output, "w", encoding="utf-8") as out:
        for own in arguments.own:
            for line in open(own, encoding="utf-8"):
                out.write(line)
                if found := re.search(r'"([^"]*)" \(', line):
                    taken.add(found.group(1) or None)
        sources.text.read_articles({n for n in sources.nouns if " " not in n}, sources.adjectives | set(sources.nouns))
        writer = Writer(sources, out, taken)
        if arguments.frames:
            frames(arguments.frames, writer, sources)
        lemmas(writer, sources)
    print(f"{writer.count} entries, {len(taken)} concepts of your own")


if __name__ == "__main__":
    main()
