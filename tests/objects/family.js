// The whole family as a script of the system's own engine uses it. The host gives `root`, and
// `meter` and `step`, which it implements itself.

function expect(what, actual, expected) {
    if (actual !== expected) throw new Error(what + ": " + actual + ", not " + expected);
}
function refuses(what, call) {
    var failed = false;
    try { call(); } catch (error) { failed = true; }
    expect(what + " is refused", failed, true);
}
function content(array) {
    var items = [];
    for (var i = 0; i < array.GetCount(); ++i) items.push(array.GetItem(i));
    return items.join("|");
}

// Arrays of each kind, by the same steps.
var makers = [["NewIntArray", 1, 2, 3], ["NewDoubleArray", 1.5, 2.5, 3.5],
              ["NewStringArray", "one", "two", "three"]];
for (var i = 0; i < makers.length; ++i) {
    var row = makers[i], array = root[row[0]](), other = root[row[0]]();
    array.Insert(row[1], 0);
    array.Insert(row[3], 99);
    array.Insert(row[2], 1);
    expect(row[0], content(array), [row[1], row[2], row[3]].join("|"));
    other.InsertFrom(array, 1, 9, 0);
    expect(row[0] + " from another", content(other), [row[2], row[3]].join("|"));
    other.SetItem(0, row[1]);
    other.RemoveRange(1, 1);
    expect(row[0] + " shortened", content(other), "" + row[1]);
    other.Assign(array);
    expect(row[0] + " assigned", content(other), content(array));
    array.Clear();
    expect(row[0] + " cleared", array.GetCount(), 0);
    refuses(row[0] + " behind its end", function () { array.GetItem(0); });
}
expect("words", content(root.SplitWords('a  "b c" d""')), 'a|b c|d""');

// Objects.
var one = root.NewText("one"), two = root.NewText("two");
var list = root.NewObjectList(), array = root.NewObjectArray();
list.Insert(one, 0);
list.Insert(two, 1);
list.Insert(one, 2);
expect("an element's text", list.GetItem(1).GetText(), "two");
expect("the second place", list.FindFrom(one, 1), 2);
expect("not found", list.Find(array), -1);
expect("places removed", list.RemoveAll(one), 2);
array.Insert(two, 0);
array.Remove(two);
expect("objects left", array.GetCount(), 0);

// Values.
one.SetText("longer");
expect("length", one.GetLength(), 6);
var bits = root.NewBitSet(70), mask = root.NewBitSet(70);
bits.Fill(true, 60, 99);
bits.SetBit(3, true);
mask.Or(bits);
expect("bits", bits.CountRange(0, 70), 11);
expect("equal sets", mask.IsEqual(bits), true);
mask.AndNot(bits);
expect("no bit", mask.IsAny(), false);
refuses("a set without bits", function () { root.NewBitSet(0); });
var signal = root.NewSignal();
signal.SetState(true);
expect("signal", signal.GetState(), true);

// Numbers of 64 bits, which engines know as their own.
var values = root.NewValueArray();
values.Insert(7, 0);
values.Insert(9007199254740992, 1);
expect("a large value", values.GetItem(1), 9007199254740992);

// A key, and what it hides.
var key = root.NewMemoryBlock(16);
expect("bytes", key.GetSize(), 16);
var hidden = root.EncryptText(key, one);
expect("hidden", hidden.GetText() === "longer", false);
expect("found again", root.DecryptString(key, hidden.GetText()).GetText(), "longer");
refuses("an empty key", function () { root.EncryptText(root.NewMemoryBlock(0), one); });

// Names and numbers.
var table = root.NewKeywordTable("*:1|none:0|best:2", 0, 9, 0, "", false);
expect("a name", table.GetValue("BEST"), 2);
expect("no name", table.GetValue("worst"), 1);
expect("hashed", root.NewHashedKeywordTable("a:4", 0, 9, 0, "", true).GetValue("a"), 4);

// Pages and a colour.
var range = root.NewPageRange();
range.SetPageCount(10);
range.SetText("1-3, 7");
range.SetType(6);
expect("pages", content(range.ToPageList(false)), "0|1|2|6");
expect("the first", range.First(), 0);
var walked = [];
for (var page = range.First(); page >= 0; page = range.Next(false, false)) walked.push(page);
expect("walked", walked.join("|"), "0|1|2|6");
var ink = root.NewColor(0);
ink.SetText("#FF8000");
ink.SetKind(1);
expect("ink", ink.GetText(), "CMYK(0,0.498,1,0)");
expect("seen", ink.GetColorRef() >>> 0, 0xFF0080FF);

// A share of the host's progress.
meter.SetRange(100);
meter.SetPosition(20);
var slice = root.NewProgressSliceAll(meter, 40);
slice.SetRange(10);
slice.SetPosition(5);
expect("position", meter.GetPosition(), 40);

// What was done, undone.
var history = root.NewOperationHistory();
history.OpenGroup();
history.Add(step);
history.Add(step);
history.CloseGroup();
expect("steps", history.GetCount(), 1);
history.Undo(1, 0);
expect("undone", history.CanUndo(), false);
expect("can be redone", history.CanRedo(), true);
expect("its text", history.GetStepText(0, 1), "1");
history.Lock();
refuses("a move of a locked history", function () { history.Redo(1, 0); });

// Statuses and papers.
expect("canceled", root.IsCanceledStatus(0x800704C7), true);
expect("a sentence", root.GetStatusText(0x80070057, 1).length > 0, true);
expect("paper", root.GetDefaultPaper() < 50, true);
refuses("a name that nobody has", function () { root.NewNothing(); });
