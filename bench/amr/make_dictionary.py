#!/usr/bin/env python3
"""Makes a dictionary for examples/amr-english from what a user has: PropBank frame files, a UniMorph table of English
verbs, and the files of WordNet 3.0.

    lexon-dict import --from propbank FOLDER -o senses.txt
    make_dictionary.py --frames FOLDER --senses senses.txt --forms unimorph.tsv --wordnet FOLDER --own entries.txt ... -o entries.txt

Entries of --own stand first and replace what would be made for the same concept word. The attributes are those of the
grammar: V with BASE PAST PTCP ING, N with PL, ADJ with CMP and SUP, ADV; HUM for people, TIM for times, MASS for what
is not counted; SA1 for a verb whose ARG1 is its subject, pNx for the preposition x of ARGn, INFn for an infinitive."""
import argparse
import collections
import pathlib
import re

VOWEL = re.compile(r"(?!(uni(?!m|n(?!o)|dent)|use|usu|uti|eu|one\b|once|ubi|ura))(?:[aeiou]|hour|honest|honou?r|heir)", re.I)
PREPOSITIONS = set("about above across after against along among around as at before behind between by for from in into "
                   "like near of off on onto out over through to toward towards under upon with within without".split())
PARTICLES = set("about across ahead along apart around aside away back by down forward in off on out over through together "
                "up".split())
# Determiners and pronouns that begin a plain object.
OBJECTS = set("the a an my your his her its our their this that these those him it me them you us some any every no each "
              "another all many more".split())
# Places that something is on, unless the examples say otherwise.
ON_PLACES = set("planet earth moon island continent coast beach shore border ground floor roof wall ceiling street road "
                "bridge square hill mountain farm shelf stage screen page list map lawn deck platform surface raft horse bicycle "
                "train bus ship boat plane table desk chair bench bed side".split())
# Places and containers that something is in.
IN_PLACES = set("box bag pocket drawer cup glass bowl pot bottle basket room house kitchen garden cage jar bucket suitcase trunk "
                "envelope folder oven fridge pan hospital prison jail school office cell tank pool river lake sea forest field "
                "town city village country building mouth cupboard closet garage barn shed cellar nest bank cave grave "
                "tomb coffin sack barrel tin kettle chest bathtub sink bathroom bedroom car wallet purse safe hole tunnel "
                "refrigerator freezer museum library church courtyard yard park jungle desert valley shade sun spring summer autumn winter".split())
# Where something is at.
AT_PLACES = set("edge entrance exit gate stove counter foot crossroads frontier finish".split())
# Adverbs that stand in the middle of a clause, before its verb.
MIDDLE = set("certainly probably possibly really truly surely obviously apparently indeed actually clearly finally usually "
             "generally normally rarely seldom hardly barely merely simply scarcely nearly frequently recently suddenly".split())
# Those of them that are said of a clause as a whole, its negation included: it is obviously not so.
OF_CLAUSE = set("certainly probably possibly surely obviously apparently indeed actually clearly finally simply recently "
                "sometimes presumably evidently".split())
# What is said of the fact that a clause tells stands in front of it, with a comma.
OPENERS = set("fortunately unfortunately luckily unluckily surprisingly unsurprisingly interestingly ironically incidentally "
              "admittedly regrettably hopefully meanwhile nevertheless nonetheless moreover furthermore".split())
# What somebody thinks of a thing stands before its size and age: the good old days.
OPINIONS = set("good bad nice beautiful great wonderful terrible horrible awful lovely ugly strange odd poor dear excellent pretty "
               "magnificent splendid marvelous remarkable extraordinary charming delightful brave noble silly stupid foolish clever "
               "dangerous important famous amazing fine perfect miserable wretched pathetic simple special lonely terrific "
               "fantastic impressive attractive handsome cute sweet gentle kind nasty wicked evil cruel mean vile proud humble "
               "honest innocent".split())
# What English has in front of the object of a verb, and of its noun, whatever the examples make more frequent.
VERB_OBJECTS = {verb: preposition for preposition, verbs in {
    "to": "subscribe adhere conform succumb resort refer object react respond listen belong attest allude cater cling consent "
          "relate testify",
    "at": "look glance stare gaze laugh smile frown glare wink peer aim hint marvel sneer grin scoff recoil balk wince chuckle giggle leer",
    "on": "depend rely insist focus concentrate elaborate dwell embark infringe encroach reflect spy capitalize impinge",
    "for": "wait hope yearn long apologize opt strive account atone vouch vie",
    "in": "participate engage indulge specialize succeed partake reside",
    "with": "cope deal interfere tamper comply sympathize collaborate compete cooperate flirt collide coincide clash quarrel "
            "war wrestle experiment meddle disagree",
    "from": "refrain abstain suffer recover differ stem",
    "about": "complain brag boast gossip rave care speak talk chat pontificate bitch moan gripe grumble fuss fret rant reminisce",
    "over": "preside",
    "against": "rebel discriminate retaliate conspire",
    "": "lack impress oppose access contact convoy cure delay diagnose interview impact border",
    "of": "dispose approve disapprove dream beware repent despair",
    "into": "delve inquire pry"}.items() for verb in verbs.split()}
VERB_SECOND = {verb: preposition for preposition, verbs in {
    "of": "rob convince", "on": "put", "into": "insert divide transform convert", "with": "fill equip", "in": "invest", "for": "ban",
    "to": "subject expose limit devote dedicate attribute attach", "from": "separate distinguish exclude isolate"}.items()
               for verb in verbs.split()}
NOUN_OBJECTS = {verb: preposition for preposition, verbs in {
    "on": "strike spend attack influence impact comment ban tax limit assault raid restrict focus pressure emphasize effect affect report agree",
    "for": "hunt prepare praise reward plan wait long demand desire hope need respect care request support prefer vote apologize love admire compete",
    "in": "increase decrease rise drop decline improve change cut believe trust participate",
    "to": "harm injure damage threaten marry visit answer react respond reply object oppose access addict attend solve resist adapt adhere",
    "at": "look glance stare gaze laugh smile shout yell guess wonder anger attempt",
    "of": "see fear complete think travel",
    "about": "complain worry joke doubt dream",
    "against": "charge crime discriminate fight protest struggle campaign revolt rebel"}.items() for verb in verbs.split()}
# Nouns of these have a clause with "that" behind them: the belief that.
THAT_NOUNS = set("believe hope fear know claim state announce report conclude feel suspect decide agree promise argue assume "
                 "assure admit allege complain confirm declare discover doubt estimate expect explain find guarantee imply "
                 "indicate insist note observe predict prove propose realize recognize recommend remark remind reply reveal "
                 "say suggest suppose swear understand warn wish worry assert deny aware certain likely possible proof "
                 "opine convince threaten imagine dream accuse rumor demand require request evidence allege idea notion theory".split())
# Behind the object of these stands what it is called or becomes: "they called him a fool".
NAMING_VERBS = ("call", "name", "elect", "appoint", "consider", "crown", "deem", "dub", "pronounce", "nickname", "declare")
# What a verb does, as a noun, where neither the frame files nor WordNet have one.
NOUNS = {verb: noun for verb, noun in (one.split(":") for one in (
    "live:life thirst:thirst hope:hope wait:wait exist:existence deject:dejection behave:behavior concern:concern "
    "worry:worry entertain:entertainment disappear:disappearance shame:shame wonder:wonder pretend:pretense obey:obedience "
    "err:error cry:cry excuse:excuse hunt:hunt belong:belonging isolate:isolation hesitate:hesitation insist:insistence "
    "persist:persistence resist:resistance exist:existence occur:occurrence refuse:refusal survive:survival tend:tendency tax:tax link:link "
    "reverse:reversal receive:receipt continue:continuation close:closure hire:hiring handle:handling "
    "buy:purchase meet:meeting add:addition teach:teaching attend:attendance act:action "
    "avoid:avoidance settle:settlement introduce:introduction gather:gathering divide:division locate:location remind:reminder "
    "sponsor:sponsorship imply:implication assert:assertion differ:difference appreciate:appreciation trust:trust "
    "proclaim:proclamation forgive:forgiveness practice:practice enforce:enforcement entitle:entitlement impress:impression "
    "pray:prayer celebrate:celebration race:race endure:endurance convince:conviction attribute:attribution "
    "resent:resentment open:opening spend:spending steal:theft smile:smile sigh:sigh yell:yell nod:nod glance:glance "
    "shout:shout stare:stare whisper:whisper greet:greeting grin:grin pause:pause gaze:gaze discourage:discouragement "
    "insure:insurance press:pressure arouse:arousal commence:commencement address:address "
    "build:building mine:mining light:lighting cross:crossing land:landing shop:shopping school:schooling cook:cooking "
    "kill:killing sign:signing bomb:bombing draw:drawing found:founding record:recording sail:sailing shoot:shooting "
    "write:writing lend:lending borrow:borrowing plant:planting form:formation declare:declaration "
    "imprison:imprisonment astonish:astonishment sympathize:sympathy rob:robbery trial:trial sound:sound lift:lift "
    "book:booking stake:stake fraud:fraud sanction:sanction embargo:embargo auction:auction ambush:ambush breach:breach bribe:bribe cruise:cruise "
    "delight:delight despair:despair disguise:disguise disregard:disregard draft:draft duel:duel escort:escort focus:focus "
    "hike:hike hug:hug lapse:lapse lease:lease lobby:lobby mandate:mandate misuse:misuse mortgage:mortgage "
    "overhaul:overhaul pledge:pledge prejudice:prejudice probe:probe quarantine:quarantine quarrel:quarrel query:query quest:quest "
    "rampage:rampage rebuke:rebuke relapse:relapse revolt:revolt ridicule:ridicule sabotage:sabotage "
    "slump:slump stampede:stampede swap:swap swindle:swindle tie:tie toast:toast upset:upset "
    "venture:venture wager:wager curse:curse yield:yield want:want craze:craze boycott:boycott kiss:kiss knock:knock bite:bite kick:kick punch:punch "
    "manufacture:manufacture fire:firing spend:spending hack:hacking scold:scolding mix:mixture "
    "weep:weeping happen:happening push:push pull:pull beat:beating "
    "whip:whipping flog:flogging fish:fishing farm:farming stab:stabbing loot:looting hang:hanging sing:singing "
    "train:training dump:dumping log:logging print:printing pack:packing spell:spelling weave:weaving knit:knitting "
    "skate:skating ski:skiing surf:surfing box:boxing gamble:gambling smuggle:smuggling traffic:trafficking launder:laundering "
    "bully:bullying beg:begging clap:clapping howl:howling bark:barking bleed:bleeding crave:craving sever:severance "
    "uproot:uprooting flood:flooding shell:shelling poison:poisoning drown:drowning kidnap:kidnapping "
    "hijack:hijacking torture:torture behead:beheading breed:breeding graze:grazing board:boarding "
    "pluck:plucking thaw:thaw melt:melting wed:wedding christen:christening beget:begetting ").split())}
# Verbs with a noun that the frame files write without its article.
PHRASES = {"make difference": "make a difference", "give hand": "give a hand", "get grip": "get a grip", "have clue": "have a clue",
           "get kick": "get a kick", "make scene": "make a scene", "take picture": "take a picture", "have good run": "have a good run",
           "point finger": "point the finger", "take effect": "take effect", "have point": "have a point", "shed blood": "shed blood",
           "have eye on": "have an eye", "give pass": "give a pass", "break heart": "break the heart", "touch base": "touch base",
           "toe line": "toe the line", "jump gun": "jump the gun", "draw line": "draw the line", "have hand in": "have a hand",
           "keep eye out": "keep an eye out", "jump on bandwagon": "jump on the bandwagon", "have to do with": "have to do",
           "let know": "inform", "make up mind": "decide", "read between lines": "read between the lines", "line pocket": "line pockets"}
# Words that name no deed, though the frame files or WordNet have them for the verb: "the make of a coat", "the leave".
# Verbs that nobody uses: who is proud does not pride.
NO_VERBS = {"pride(>01)": "of", "hunger(>01)": "for", "thirst(>01)": "for"}
NO_NOUNS = set("make leave build kill hold raise face head fire hand mind matter subject term feature average stem float center "
               "figure contain allow cause proceed commit watch drink sink file store stain show run feed set put take let "
               "carry bring keep stand sit lie wear beat lift drag pull push toss fill sweep draw back clear "
               "hit cast grasp squeeze register".split())
# How English builds a sense, where the frame files have no example of it: "an answer with a smile", "split into halves".
# POSTN is for a participle that stands behind its noun, "the money left".
BUILT = {
    "grateful(>01)": "p1to p2for", "thankful(>02)": "p1to p2for", "innocent(>01)": "p2of",
    "responsible(>01)": "GER1",
    "answer(>01)": "p2with", "capable(>01)": "p2of PG2", "sick(>04)": "p2of PG2", "attend(>02)": "p1to", "comment(>01)": "p3on",
    "ask(>02)": "p1for", "grateful(>01)": "p1to p2for GER2", "reluctant(>01)": "INF1", "hesitant(>01)": "INF1", "unwilling(>01)": "INF1", "dress(>01)": "p2in", "come(>01)": "p3from p4to", "draw(>01)": "p2for", "excuse(>01)": "p2for GER2", "leave(>17)": "POSTN",
    "question(>01)": "p1about", "policy(>01)": "p2on", "remain(>01)": "GER3", "speak(>01)": "p1about p2to", "split(>01)": "p2into",
    "sit-down(>02)": "p2on", "do(>02)": "p2to", "go-back(>19)": "p2to",
    "title(>01)": "NP2", "speak(>01)": "p2to", "view(>02)": "THAT1", "war(>01)": "p2over", "weigh(>01)": "SA1", "marry(>01)": "NP2",
    "thank(>01)": "p2for GER2", "accuse(>01)": "p2of GER2", "suspect(>01)": "p2of GER2", "praise(>01)": "p2for GER2",
    "punish(>01)": "p2for GER2", "prevent(>01)": "p2from GER2",
}
# Who does it, where the shortest word that is made of the verb is another.
AGENTS = {"apply": "applicant", "assist": "assistant", "inhabit": "inhabitant", "reside": "resident", "study": "student",
          "immigrate": "immigrant", "participate": "participant", "compete": "competitor", "represent": "representative",
          "counsel": "counselor", "act": "actor", "account": "accountant", "assail": "assailant", "defend": "defender",
          "witness": "witness", "negotiate": "negotiator", "oppose": "opponent", "assault": "assailant", "tour": "tourist",
          "trick": "trickster", "volunteer": "volunteer"}
# Who does it has no noun, or one that means something else: nobody who waits is a waiter.
NO_AGENTS = set("account attract captivate cart close come condition confide connect count date deify demonize despair draw dress "
                "equal equate fail go hang have hear hit idolize incarnate know let log look major man marry mutate name open "
                "arrive block depart laugh surrender crime mistake pray smile escape sacrifice obey warn journey "
                "oust pass personify port pretend prey process rest see sit stand tell tie turn wait wake walk want".split())
# Nouns of agents that the examples lack.
MORE_AGENTS = set("abuser achiever adopter aggressor avenger boater bomber bowler builder cleaner climber commuter founder "
                  "holder manufacturer moderator operator publisher shooter strangler campaigner colonizer complainer debater deceiver defector "
                  "deserter doer earner emigrant exhibitor facilitator flatterer forecaster hitchhiker imitator informer "
                  "inheritor infiltrator interrogator jailer lawbreaker lodger looter molester nominee objector onlooker "
                  "overseer owner pickpocket poisoner polluter quitter rapist recruiter redeemer rescuer retiree rioter robber "
                  "saver seducer seller sender skater skier sleeper smoker smuggler spender squatter stalker storyteller "
                  "sufferer supervisor swimmer tempter thinker tormentor traitor translator traveler traveller trespasser "
                  "vandal violator volunteer wanderer whistleblower woodcutter worshipper".split())
# What an adjective has in front of what it is about.
ADJECTIVE_OBJECTS = {adjective: preposition for preposition, adjectives in {
    "of": "afraid aware proud fond capable full ashamed jealous worthy guilty tired typical envious weary unaware conscious suspicious certain uncertain contemptuous wary empty ignorant",
    "for": "famous ready responsible sorry eligible suitable grateful eager necessary desperate greedy hungry thirsty",
    "about": "worried anxious enthusiastic pessimistic optimistic nervous adamant careless curious honest frank blunt cautious",
    "with": "angry busy familiar content compatible consistent conversant comfortable",
    "from": "different absent distinct safe", "on": "dependent keen reliant", "at": "skilled",
    "in": "interested fluent", "to": "similar equal loyal accustomed relevant hostile responsive sensitive equal indifferent vulnerable immune allergic"}.items()
    for adjective in adjectives.split()}
# Adjectives that never stand in front of a noun: "the child who is asleep".
PREDICATIVE = set("asleep afraid alive alone awake aware alike ashamed afloat adrift ablaze aloof unable worth sorry ready glad "
                  "sure unwell content unaware".split())
# Behind these an adjective says what the subject is or becomes.
# Verbs with a particle that nobody does to anything.
ALONE = re.compile("(come|go|fall|sit|lie|stand|run|walk|fly|grow) (back|away|down|up|out|in|on|home|asleep|apart|along|around)")
# With the senses that are so, where others take an object or a place: "it smells good", but "she smells a flower".
COPULAR = {"become": (), "seem": (), "remain": (), "keep": (), "look": (2,), "sound": (1,), "smell": (2,), "taste": (2,),
           "feel": (1, 2, 5), "grow": (2,), "turn": (2,), "get": (3,), "go": (8,), "appear": (2,), "stay": (1,)}
FACT_VERBS = set("refer object react respond attest allude depend rely focus concentrate elaborate dwell reflect account approve "
                 "disapprove benefit stem result arise cope point".split())
# What happens to things by itself as well: "the door opened" where nobody is named who opens it.
ERGATIVE = set("increase decrease change improve begin start end stop continue develop spread shift double triple expand shrink "
               "evolve accumulate worsen widen accelerate collapse sink melt freeze move turn open close retire recover hang lean stand float spin bounce roll "
               "land drown heal crack snap pop shatter spill soften vary warm lie live sleep emerge depend belong bleed shake vibrate "
               "rattle hum buzz echo flash succeed suffer rot travel trip stumble collide shine ring crash explode burst fade "
               "grow die swell dissolve thaw ripen dangle sway rotate revolve descend ascend".split()) | {
    "weaken", "strengthen", "slow", "harden", "lessen", "darken", "cool", "tighten", "loosen", "thicken", "deepen", "broaden",
    "lengthen", "narrow", "calm down", "wake up", "settle down", "slow down", "speed up", "break up", "cheer up", "warm up", "cool down", "dry up",
    "break", "split", "bend", "boil", "burn down", "blow up", "close down", "go ahead", "heat up", "line up", "burn out", "die out", "fall apart"}
# What has a topic with about.
ABOUT_NOUNS = set("information news story book article bullshit nonsense joke rumour rumor gossip film movie song poem theory "
                  "opinion view truth fact data documentary lesson lecture conversation discussion debate secret detail thing "
                  "something anything nothing everything speech talk paper essay research argument rumour video program post "
                  "comment letter email survey poll lie myth fuss law question report remark statement complaint concern worry doubt".split())
# Verbs that differ by their sense alone.
SENSE_FORMS = {"lie(>08)": {"PAST": "lied", "PTCP": "lied"}, "lie(>07)": {"PTCP": "lain"}, "lie-down(>09)": {"PTCP": "lain"}}
# Of several forms of the past the one for a verb, where the examples have other words that look the same.
STRONG = {"bear": "bore borne", "wake": "woke woken", "awake": "awoke awoken", "drink": "drank drunk", "sink": "sank sunk", "clothe": "clothed clothed", "melt": "melted melted",
          "tread": "trod trodden", "forbid": "forbade forbidden", "shine": "shone shone", "be": "was been", "abide": "abided abided", "pen": "penned penned"}
GERUND_PREPOSITIONS = set("about against at by from in into of on with".split())
# Adjectives that are adverbs as they are.
FLAT_ADVERBS = set("hard fast early late long high low deep close near".split())
STATES = {word for line in open(pathlib.Path(__file__).parents[2] / "src/import/states.txt", encoding="utf-8")
          if not line.startswith("#") for word in line.split()}
# Acts, what is thought and said, events, feelings, processes, states.
DEED_FILES = {4, 9, 10, 11, 12, 22, 26}
MASS_FILES = {7, 12, 27, 26}


def vowel(form):
    return ",VOW" if VOWEL.match(form) else ""


def short(word):
    """One syllable, or two that end in y."""
    return len(re.findall(r"[aeiouy]+", re.sub(r"e$", "", word))) <= 1


def plural(noun):
    # Two sheep: these have no other form.
    if re.search(r"(sheep|deer|fish|(air|space|hover)craft|series|species|offspring|swine|moose|salmon|trout|bison|headquarters|[^ ]{2}ics)$", noun):
        return noun
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
        self.behind = collections.defaultdict(collections.Counter)
        for path in sorted(pathlib.Path(folder).glob("*.xml")) if folder else ():
            for text in re.findall(r"<text>([^<]*)</text>", path.read_text(encoding="utf-8", errors="replace")):
                words = text.lower().split()
                self.counts.update(words)
                self.sentences.append(words)
                for word, after, second in zip(words, words[1:], words[2:] + [""]):
                    # "To the sea", but not "to sing".
                    is_told = after in PREPOSITIONS and (after != "to" or second in OBJECTS)
                    self.behind[word][after if is_told else "object" if after in OBJECTS else ""] += 1

    def preposition(self, forms):
        """What a verb has in front of its object nearly always: "look at". Empty for a plain object."""
        seen = sum((self.behind[form] for form in forms), collections.Counter())
        told, count = max(((p, seen[p]) for p in ("at", "for", "from", "on", "to", "with")), key=lambda one: one[1])
        return told if count >= 3 and count > 2 * seen["object"] and count >= 0.2 * sum(seen.values()) else ""

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
        if self.counts[many] > 1.5 * self.counts[noun] and self.counts[many] > 7:
            marks += ",PLUR"
        if self.prepositions[noun]:
            best, count = max(((p, n) for p, n in self.prepositions[noun].items() if p in ("in", "on", "at")),
                              key=lambda one: one[1], default=("", 0))
            if count > (1 if best != "on" and noun not in ON_PLACES else 3):
                return marks + f",{best.upper()}P"
        return marks + ",ONP" * (noun in ON_PLACES) + ",INP" * (noun in IN_PLACES) + ",ATP" * (noun in AT_PLACES)


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
        self.participles = {form for tags in self.forms.values() for form in tags.get("PTCP", ())}
        self.tagged = collections.Counter()
        self.women = set()
        self.nouns, self.adjectives, self.adverbs, self.verbs = {}, set(), set(), set()
        self.common = set()
        self.shapes = collections.defaultdict(set)
        self.agents, self.nominal, self.adjectival, self.manner, self.opposite, self.quality, self.quality_ness = ({} for _ in range(7))
        self.exceptions = collections.defaultdict(set)
        self.irregular = {"noun": {}, "adj": collections.defaultdict(list), "verb": {}}
        if arguments.wordnet:
            self.read_wordnet(pathlib.Path(arguments.wordnet))

    def read_wordnet(self, folder):
        synsets, women = {}, set()
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
                if part == "noun" and re.match(r"(an? |the )(\w+ )?(woman|female|girl|mother|daughter) (?!or\b)", line.partition(" | ")[2]):
                    women.add(fields[0])
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
                    if first in women:
                        self.women.add(lemma)
                    self.nouns[lemma] = written.replace("_", " "), file, int(fields[-int(fields[2]) - 1])
                    if any(fields[0] in synsets[part, sense][1] for sense in fields[-int(fields[2]):]):
                        self.common.add(lemma)
                else:
                    {"verb": self.verbs, "adj": self.adjectives, "adv": self.adverbs}[part].add(lemma)
            if (folder / f"{part}.exc").exists() and part != "adv":
                for line in open(folder / f"{part}.exc"):
                    form, *lemmas = line.split()
                    for lemma in lemmas:
                        if part == "verb":
                            self.exceptions[lemma].add(form)
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
                denied = "(un|in|im|il|ir|dis)" + re.escape(source) + "|" + re.escape(re.sub("ful$", "", source)) + "less"
                if part == "adj" and symbol == "!" and re.fullmatch(denied, target):
                    self.opposite[source] = target
                if part == "adj" and category == "n" and symbol == "+" and target_file != 18:
                    table = self.quality_ness if target.endswith("ness") else self.quality
                    table.setdefault(source.lower(), target)
                if part == "adv" and symbol == "\\":
                    # Of several adverbs the one that is made of the adjective: slowly, not slower.
                    if source.endswith("ly") or target.lower() not in self.manner:
                        self.manner[target.lower()] = source

    def read_verb_frames(self, words, fields):
        """The numbers of the sentence frames that a verb has in any of its senses."""
        for number, word in zip(fields[2::3], fields[3::3]):
            for i, verb in enumerate(words):
                if int(word, 16) in (0, i + 1):
                    self.shapes[verb.lower().replace("_", " ")].add(int(number))

    def is_intransitive(self, verb):
        """Things do it, and nobody does it to them: disappear. Without an agent it is no passive."""
        return 1 in self.shapes[verb] and self.shapes[verb] <= {1, 2, 3, 4, 6, 7, 12, 13, 22, 23, 27, 28, 35}

    def is_state(self, lemma, forms):
        """A state stands in the present, unless the examples tell of the verb in the past nearly always."""
        present, past = self.text.counts[forms["S"]], self.text.counts[forms["PAST"]]
        return lemma in STATES and not (present + past >= 8 and present < 0.13 * (present + past))

    def plural(self, noun, written):
        """An irregular plural if people write it, or if it is of a kind that has no other: knives, men, crises, cacti."""
        known, made = self.irregular["noun"].get(noun), plural(written)
        is_only = known and re.search("(ves|men|feet|teeth|mice|lice|geese|children|oxen)$", known) or \
            known and (noun[-2:], known[-1:]) in (("us", "i"), ("on", "a"), ("is", "s"), ("ix", "s"), ("ex", "s"))
        return known if known and (is_only or self.text.counts[known] > self.text.counts[made]) else made

    def form_weight(self, lemma, tag, form):
        """How often people write the form, and how sure it is that they mean this verb: "bare" is no form of "bear"."""
        weight = self.text.counts[form]
        is_known = form in self.exceptions[lemma] or form == verb_rule(lemma)[tag]
        is_other_word = any(self.tagged[form, part] >= 5 for part in "123") or len(form) < 3
        if form == lemma:
            weight *= 0.2
        elif is_other_word:
            weight *= 0.25 if is_known else 0.02
        elif not is_known:
            weight *= 0.5
        return weight * (10 if tag == "PTCP" and form.endswith("n") and is_known else 1)

    def deed_of(self, verb):
        """The noun of what a verb does, where the frame files have none: amazement, redefinition."""
        found = [noun for noun in self.nominal.get(verb, ())
                 if noun[:3] == verb[:3] and re.search("(tion|sion|ment|ance|ence|al|ure)$", noun) and noun != verb
                 and self.nouns.get(noun, ("", 0))[1] in DEED_FILES]
        # "A charge": of the same form, where people use it as a noun at least as often.
        if not found and verb in self.nouns and self.nouns[verb][1] in (4, 10, 11, 12):
            found = [verb] * (self.tagged[verb, "1"] >= max(3, self.tagged[verb, "2"]))
        return sorted(found, key=lambda noun: -self.tagged[noun, "1"])[:1]

    def quality_of(self, adjective):
        """The noun of a quality, of the same root even where WordNet does not tell: loyalty."""
        found = self.quality.get(adjective) or self.quality_ness.get(adjective)
        return found or next((adjective + end for end in ("ty", "ity")
                             if len(adjective) > 3 and adjective + end in self.nouns), None)

    def verb_forms(self, lemma, concept=""):
        first, *rest = lemma.split(" ")
        forms = verb_rule(first)
        for tag, known in self.forms.get(first, {}).items():
            # Of several forms the one that people write.
            known = [form for form in known if form not in PARTICLES | {"it"}]
            forms[tag] = max(known or [forms[tag]], key=lambda form: (self.form_weight(first, tag, form), form == forms[tag]))
        if first in STRONG:
            forms["PAST"], forms["PTCP"] = STRONG[first].split()
        forms.update(SENSE_FORMS.get(concept, {}))
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
        forms = self.sources.verb_forms(first if particle in PARTICLES else lemma, concept)
        if particle in PARTICLES:
            more += f",ZP,Z{particle}"
        # The spelling rules put the "s" of the present behind the last word.
        if self.sources.is_state(lemma, forms) and (" " not in lemma or particle in PARTICLES):
            more = ",STATV" + more
        third = forms["S"]
        ending = ",YS" if third.endswith("ies") else ",ES" if third.endswith("es") and not forms["BASE"].endswith("e") else ""
        for tag in ("BASE", "PAST", "PTCP", "ING"):
            # "More boring": people use it as an adjective, where "walking" is what somebody does.
            if tag == "ING" and self.sources.tagged[forms[tag], "3"] > 1:
                self.entry(forms[tag], concept, f"V,ING,QING{vowel(forms[tag])}{more}")
                continue
            before = ending if tag == "BASE" else vowel(forms[tag]) if tag in ("PTCP", "ING") else ""
            self.entry(forms[tag], concept, f"V,{tag}{before}{more}")
        self.entry(third, concept, f"V,THIRD{more}")

    def is_counted(self, lemma, written):
        """Of what is mostly not counted, that people use in the plural, too: problems, but no silences."""
        counts = self.sources.text.counts
        many = self.sources.plural(lemma.lower(), written.lower())
        # "Lives" is mostly a verb.
        if re.sub("(e?s|ies)$", "", many) + "e" in self.sources.verbs - {lemma.lower()}:
            return False
        seen = self.sources.text.articles[lemma.lower()]
        return counts[many] > 2 and counts[many] > 0.3 * counts[lemma.lower()] or seen["a"] > 2 and seen["a"] > 2 * seen["bare"]

    def noun(self, lemma, concept, more=""):
        written, file, _ = self.sources.nouns.get(lemma.lower(), (lemma, 0, 0))
        if lemma != lemma.lower() or (more or concept == lemma) and lemma in self.sources.common:
            written = lemma
        kinds = {18: ",HUM", 28: ",TIM", 15: ",PLC"}.get(file, "") + (",MASS" if file in MASS_FILES and not self.is_counted(lemma, written) else "")
        kinds += ",FEM" * (file == 18 and (lemma.endswith(("ess", "woman")) and not lemma.endswith("witness") or lemma in self.sources.women))
        kinds += ",ABT" * (lemma in ABOUT_NOUNS)
        kinds += self.sources.text.noun_marks(lemma, self.sources.plural(lemma, written))
        self.entry(written, concept, f"N{kinds}{vowel(written)}{more}")
        if written[:1].islower() or file == 18 and " " not in written:
            many = self.sources.plural(lemma, written)
            self.entry(many, concept, f"N,PL{',PS' * many.endswith('s')}{kinds}{vowel(many)}{more}")

    def adjective(self, lemma, concept, more=""):
        more += ",PREDA" * (lemma in PREDICATIVE or " " in lemma and lemma.partition(" ")[0] in PREPOSITIONS)
        if opposite := self.sources.opposite.get(lemma):
            self.entry(opposite, concept, f"UN,UNADJ{vowel(opposite)}")
            if adverb := self.sources.manner.get(opposite):
                self.entry(adverb, concept, f"UN,UNADV{',OPENER' * (adverb in OPENERS)}{vowel(adverb)}")
        self.entry(lemma, concept, f"ADJ{',OPIN' * (lemma in OPINIONS)}{vowel(lemma)}{more}")
        # Behind a preposition stands the noun of the quality: after the silence.
        noun = self.sources.quality_of(lemma)
        # "In the light": of what is a noun itself that is the one.
        is_noun = lemma in self.sources.nouns and self.sources.tagged[lemma, "1"] > 0
        if noun and "(>" not in concept and not is_noun:
            alone = ",QNO" * (lemma not in self.sources.nouns and not noun.startswith(lemma + " "))
            self.entry(noun, concept, f"QN{alone},{'MASS' if noun.endswith('ness') else 'THE'}{vowel(noun)}")
        exceptions = [f for f in self.sources.irregular["adj"].get(lemma, ()) if re.search(r"(r|st|e)$", f)]
        grades = {"CMP": [f for f in exceptions if f.endswith(("r", "e"))], "SUP": [f for f in exceptions if f.endswith("st")]}
        is_graded = (short(lemma) or lemma.endswith("y")) and lemma.isalpha() and len(lemma) < 8
        if not exceptions and is_graded and lemma not in self.sources.participles:
            grades = {"CMP": [compared(lemma, "er")], "SUP": [compared(lemma, "est")]}
        for tag, forms in grades.items():
            for form in forms[:1]:
                self.entry(form, concept, f"ADJ,{tag}{vowel(form)}{more}")
                # "He worked harder".
                if lemma in FLAT_ADVERBS and tag == "CMP":
                    self.entry(form, concept, f"ADV,CMP{vowel(form)}")
        made = re.sub("ic$", "ical", re.sub("[^aeiou]le$", lambda end: end.group()[0], re.sub("y$", "i", lemma))) + "ly"
        made = made.replace("lly", "ly") if lemma.endswith("ll") else made
        is_plain = "(>" in concept or (lemma.endswith(("ic", "al", "ous", "ive", "ful", "less")) and lemma not in self.sources.adverbs)
        if adverb := self.sources.manner.get(lemma) or (made if is_plain and made in self.sources.adverbs else None):
            self.entry(adverb, concept, f"ADV{',LY' * adverb.endswith('ly')}{',SADV' * (adverb in MIDDLE)}{',WHOLE' * (adverb in OF_CLAUSE)}"
                       f"{',FRONT,OPENER' * (adverb in OPENERS)}{vowel(adverb)}{more}")


def surface(lemma):
    return lemma.replace("_", " ").replace("-", " ").strip()


def read_constructions():
    """verb_frames.txt: the shapes of clauses by verb, and the attributes of single senses."""
    shapes, senses = collections.defaultdict(list), {}
    for line in open(pathlib.Path(__file__).with_name("verb_frames.txt"), encoding="utf-8"):
        first, *rest = line.split() or "#"
        if first.isupper() or first[:-1].isupper():
            for verb in rest:
                shapes[verb.replace("-", " ")].append(first)
        elif first != "#":
            # A line that begins with "+" adds to an earlier one of the sense.
            concept = first.replace(".", "(>") + ")"
            senses[concept] = senses[concept] + rest[1:] if concept in senses and rest[0] == "+" else rest
    return shapes, senses


def told_of_verb(concept, verb, built, seen, is_alone, shapes, senses):
    """`built`, as far as the table of verbs has nothing better: its own line, the clauses of its class. A verb of no
    class governs no clause but those that its own examples show."""
    clauses = {"INF1", "GER1", "THAT1", "BARE1", "OINF1", "NOUN1", "HOWINF", "FACT1"}
    told = senses.get(concept)
    if told is None:
        own = [a for a in built if a not in clauses]
    else:
        # A line that begins with "+" adds to what the examples show.
        own = [a for a in built if a.startswith("LV") or "+" in told] + [a for a in told if not a.endswith("-") and a != "+"]
        own += ["SA1"] * is_alone
    if not clauses & set(own):
        own += shapes.get(verb, sorted(seen))
    if told is not None:
        own = [a for a in own if a + "-" not in told]
    if not {"THAT1", "BARE1", "OINF1"} & set(own):
        own.append("NOUN1")
    # Behind a preposition stands a gerund, "she objected to waiting", or the fact that somebody else waits.
    about = {a[2:] for a in own if a.startswith("p1")}
    if about & set(PREPOSITIONS) and not {"INF1", "THAT1"} & set(own):
        own.append("GER1")
    # "She accused him of lying", "they are used to waiting".
    second = {a[2:] for a in own if a.startswith("p2")}
    is_bare = told is not None and "PG2-" in told
    if not is_bare and (second & GERUND_PREPOSITIONS and "INF2" not in own or second and "GER2" in own):
        own.append("PG2")
    if about and verb in FACT_VERBS and "THAT1" not in own:
        own.append("FACT1")
    return list(dict.fromkeys(own))


def gerunds_of_adjective(built):
    """Behind the preposition of an adjective stands a gerund: "good at singing", "honest about singing"."""
    told = set(built)
    second = any(a.startswith("p2") for a in built) and not told & {"INF2", "THAT2", "GER2", "NP2"}
    first = any(a.startswith("p1") for a in built) and not told & {"INF1", "THAT1", "GER1", "SA1"}
    return ["PG2"] * second + ["GER1"] * first


def frames(path, writer, sources):
    """The senses that `lexon-dict import --from propbank` has found: their names, inflected, and how they are built."""
    shapes, constructions = read_constructions()
    senses = collections.defaultdict(list)
    for line in open(path, encoding="utf-8"):
        if found := re.match(r'\[(.*)\]\{.*?\} "(.*\(>\w+\))" \((.*?)\)', line):
            senses[found.group(2)].append((found.group(1), found.group(3).split(",")))
    for concept, names in senses.items():
        names = [(PHRASES.get(name, name), attributes) for name, attributes in names]
        lemma = surface(concept.partition("(>")[0])
        of = {part: [form for form, attributes in names if attributes[0] == part] for part in ("V", "N", "ADJ")}
        verb = lemma if lemma in of["V"] else of["V"][0] if of["V"] else None
        if verb == lemma and len(names) == 1 and not {lemma, lemma.partition(" ")[0]} & (sources.verbs | set(sources.forms)):
            verb = None
        # "In trouble", "on fire": no verb, though the frame files call it one.
        if " " in lemma and lemma.partition(" ")[0] in PREPOSITIONS:
            verb, of["ADJ"] = None, [lemma]
        # Frames that PropBank names by their noun alone.
        if not verb and lemma in PHRASES:
            verb = PHRASES[lemma]
        told = [a for a in names[0][1] if a not in ("V", "N", "ADJ", "NMZ", "QUAL")]
        seen = {a for a in told if a in ("INF1", "GER1", "THAT1")}
        built = list(told)
        if verb and lemma == verb and sense_of(concept) < 3 and not {"SA1", "NP2"} & set(built):
            told = sources.text.preposition({form for tag, form in sources.verb_forms(verb).items() if tag != "PTCP"})
            if told and not any(re.match("p1|p[2-5]" + told, a) for a in built):
                built = [a for a in built if (a, told) != ("INF1", "to")] + ["p1" + told]
        if verb and sense_of(concept) < 4 and not {"SA1", "NP2"} & set(built):
            # "A lack of rain" is no reason to lack of rain.
            told = None if concept == "look(>02)" else VERB_OBJECTS.get(lemma, "" if "p1of" in built else None)
            if told is not None:
                built = [a for a in built if not a.startswith("p1")] + ["p1" + told] * bool(told)
        if verb and sense_of(concept) < 3 and (told := VERB_SECOND.get(lemma)):
            built = [a for a in built if not a.startswith("p2") and a not in ("NP2", "INF2")] + ["p2" + told]
        is_copular = verb in COPULAR and (not COPULAR[verb] or sense_of(concept) in COPULAR[verb])
        is_getting = verb == "get" and sense_of(concept) > 2
        more = BUILT.get(concept, "").split()
        if not verb and (told := ADJECTIVE_OBJECTS.get(lemma)):
            more += [f"p{n}{told}" for n in "12" if "p" + n not in {a[:2] for a in built + more}]
        numbers = {argument_of(a) for a in more} - {""}
        built = [a for a in built if "THAT" in a or argument_of(a) not in numbers] + more
        is_ergative = verb in ERGATIVE and sense_of(concept) < 3
        is_alone = is_getting or is_ergative or sources.is_intransitive(verb or lemma)
        if "SA1" not in built and is_alone:
            built.append("SA1")
        if verb in NAMING_VERBS and sense_of(concept) < 3:
            built = [a for a in built if not a.startswith("p2") and a not in ("NP2", "INF2")] + ["OCOMP"]
        has_preposition = any(a.startswith("p1") for a in built)
        if verb:
            seen |= {a for a in more if a in ("INF1", "GER1", "THAT1")}
            built = told_of_verb(concept, lemma, built, seen, is_ergative, shapes, constructions)
        elif concept in constructions:
            built = [a for a in built if a.startswith("LV")] + [a for a in constructions[concept] if a != "-"]
        if not verb and of["ADJ"]:
            built += gerunds_of_adjective(built)
        pattern = "".join("," + a for a in built)
        if verb and concept in NO_VERBS:
            pattern = ",p1" + NO_VERBS[concept]
        elif verb:
            writer.verb(verb, concept, pattern + ",SMALLC" * (verb in ("make", "render", "keep") and "SMALLC" not in built)
                        + ",COPL" * (is_copular and "COPL" not in built))
            # "The unknown island": what has not been done to it.
            undone = "un" + sources.verb_forms(verb)["PTCP"]
            if verb == lemma and undone in sources.adjectives:
                writer.entry(undone, concept, "UN,UNDONE,VOW")
        # A word that is a noun at least as often as a verb names what the verb does: "the size of the garden".
        often = sources.tagged[lemma, "1"] >= max(5, 1.5 * sources.tagged[lemma, "2"])
        if verb == lemma and not of["N"] and often and not has_preposition:
            of["N"].append(lemma)
        # A gerund only where people use it as a noun: a meeting.
        nouns = [form for form in of["N"] if not re.search("ing( |$)", form)]
        # Of several nouns the one that is made of the verb, and that people use: death, not die.
        derived = sources.nominal.get(verb, ()) if verb else (lemma,)
        nouns.sort(key=lambda form: -(sources.tagged[form, "1"] + 1) * (4 if form in derived else 1))
        if lemma in NOUNS and sense_of(concept) < 4:
            nouns = [NOUNS[lemma]]
        if verb and lemma in NO_NOUNS and lemma not in NOUNS:
            nouns, of["N"] = [], []
        if verb and not nouns and lemma not in NO_NOUNS:
            nouns = sources.deed_of(lemma)
        for noun in (nouns or [form for form in of["N"] if sources.tagged[form, "1"] > 19])[:1]:
            # A noun has the prepositions of its verb, "a look at the sea", and a verb of its own, "take a look".
            of_noun = NOUN_OBJECTS.get(lemma, "")
            kept = "".join("," + a for a in built if re.match(r"p[2-5]|LV" if of_noun else r"p\d|LV", a))
            kept += f",p1{of_noun}" * bool(of_noun) + ",NOUNC" * (lemma not in THAT_NOUNS)
            writer.noun(noun, concept, (",NMZ" if verb else ",NMZ,QUAL") + kept)
        # A verb that is a noun, too, though less often: only where the graph describes it as one, "a total ban".
        # Not who does it, "a spy", and not where people say "ringing" for it.
        gerund = max((sources.tagged[form, "1"] + 1 for form in of["N"]), default=0)
        is_noun = lemma in sources.nouns and sources.nouns[lemma][1] != 18 and sources.tagged[lemma, "1"] >= 3 * gerund
        if verb == lemma and not nouns and is_noun and lemma not in NO_NOUNS:
            writer.noun(lemma, concept, ",ZNZ")
        # "The wounded soldier": of a verb an adjective of the same form is another word.
        is_own = lemma in sources.adjectives and (not verb or lemma in of["ADJ"])
        forms = sources.verb_forms(verb) if verb else {}
        adjectives = [lemma] if of["ADJ"] and is_own else of["ADJ"]
        for adjective in adjectives[:"POSTN" not in built and lemma != "own"]:
            if not verb and not of["N"] and (quality := sources.quality_of(adjective)):
                # "Loyalty to her friends", but "the similarity of the houses", which are similar to each other.
                kept = re.findall(r",p[2-5]\w+" if "similar" in concept else r",p\d\w+", pattern)
                writer.noun(quality, concept, ",NMZ,QUAL" + "".join(kept) + ",NOUNC")
            # Of a frame that is a noun: surgery, surgical.
            of_noun = ",OFN" * (not verb and lemma in of["N"] and lemma != adjective)
            # "The confused boy", "the confusing book".
            kind = ",DONE" * (adjective == forms.get("PTCP")) + ",DOING" * (adjective == forms.get("ING"))
            # "The education office": what a thing is about is named by the noun of the deed, if it has one.
            writer.adjective(adjective, concept, kind + ",OFV" * bool(nouns) if verb and concept not in NO_VERBS else pattern + of_noun)
        for agent in agent_of(sources, verb)[:1] if verb else ():
            writer.noun(agent, concept, ",AGT")


def argument_of(attribute):
    """The number of the argument that an attribute speaks of: 2 for p2from, NP2 and INF2."""
    return re.sub(r"\D", "", attribute)


def sense_of(concept):
    return int(re.search(r"\(>0*(\d+)", concept + "(>99").group(1))


def agent_of(sources, verb):
    stem = verb[:3]
    # Not "liver" for one who lives: a word for parts of the body and for animals.
    def is_used(agent):
        if agent == AGENTS.get(verb) or agent in MORE_AGENTS:
            return True
        count = sources.tagged[agent, "1"] + sources.text.counts[agent] + sources.text.counts[plural(agent)]
        # Of a verb that people use often they use the noun, too, if there is one.
        is_rare = sum(sources.text.counts[form] for form in set(sources.verb_forms(verb).values())) < 30
        return agent.islower() and verb not in NO_AGENTS and (count or is_rare) and not re.search("(ee|tion|ure|ity)$", agent)

    return sorted((a for a in sources.agents.get(verb, ()) if a.lower().startswith(stem) and is_used(a)
                   and (a in MORE_AGENTS or sources.nouns.get(a.lower(), (a, 18))[1] == 18)),
                  key=lambda a: (a != AGENTS.get(verb), a[0].isupper(), a == verb, a.endswith("ee"), len(a)))


def lemmas(writer, sources):
    for lemma, (written, file, tags) in sources.nouns.items():
        rare = sources.tagged[lemma, "1"] * 3
        if lemma in sources.adjectives and not rare and re.search("(ible|able|ous|ful|ive|less|ish|ical)$", lemma):
            continue
        # Civilians and militants are people, however often the word is an adjective.
        is_people = file == 18 and lemma.endswith(("ist", "ant", "ilian", "rival"))
        if not is_people and (sources.tagged[lemma, "3"] > rare or sources.tagged[lemma, "4"] > rare):
            continue
        if re.fullmatch(r"[A-Za-z][A-Za-z .'-]*", lemma):
            concept = written if written != lemma else lemma
            for key in sorted({concept, concept.replace(" ", "-")} if written == lemma else {concept}):
                writer.noun(written, key)
            # The crane, beside a poet of that name.
            if written != lemma and lemma in sources.common and len(lemma) > 2:
                writer.noun(lemma, lemma)
    for noun, adjectives in sources.adjectival.items():
        if noun[:1].isupper():
            for adjective in sorted(adjectives, key=lambda one: one[:3] != noun[:3])[:1]:
                writer.entry(adjective, noun, f"ADJ{vowel(adjective)}")
    for lemma in sorted(sources.adjectives):
        if sources.tagged[lemma, "1"] > 20 * sources.tagged[lemma, "3"] or sources.tagged[lemma, "4"] > 20 * sources.tagged[lemma, "3"]:
            continue
        if re.fullmatch(r"[A-Za-z][A-Za-z -]*", lemma):
            for key in sorted({lemma, lemma.replace(" ", "-")}):
                told = ADJECTIVE_OBJECTS.get(lemma)
                writer.adjective(lemma, key, f",p1{told},p2{told}" if told else "")
    for lemma in sorted(sources.adverbs):
        # "He said softly": of the two adverbs of an adjective that is plain.
        made = sources.manner.get(lemma, "")
        if lemma in sources.adjectives and made.endswith("ly") and sources.tagged[made, "4"] > sources.tagged[lemma, "4"]:
            continue
        if re.fullmatch(r"[a-z][a-z -]*", lemma):
            for key in sorted({lemma, lemma.replace(" ", "-")}):
                kinds = ",MID" * (lemma in MIDDLE) + ",WHOLE" * (lemma in OF_CLAUSE) + ",FRONT,OPENER" * (lemma in OPENERS) + ",END" * (" " in lemma)
                writer.entry(lemma, key, f"ADV{kinds}{vowel(lemma)}{',PREDA' * (lemma == 'asleep')}")
    # UniMorph has forms of verbs that nobody uses, such as "younged".
    for lemma in sorted(sources.verbs | set(sources.forms) - sources.adjectives):
        if re.fullmatch(r"[a-z][a-z -]*", lemma):
            # "He came back": of senses that the frame files do not have.
            is_alone = ALONE.fullmatch(lemma) is not None
            for key in sorted({lemma, lemma.replace(" ", "-")}):
                writer.verb(lemma, key, ",SA1" * is_alone)
                for agent in agent_of(sources, lemma)[:1]:
                    writer.noun(agent, key, ",AGT")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--frames", help="the folder of PropBank's frame files, whose examples are read as text")
    parser.add_argument("--senses", help="what `lexon-dict import --from propbank` makes of them")
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
        if arguments.senses:
            frames(arguments.senses, writer, sources)
        lemmas(writer, sources)
    print(f"{writer.count} entries, {len(taken)} concepts of your own")


if __name__ == "__main__":
    main()
