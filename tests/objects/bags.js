// Attribute bags as a script of the system's own engine uses them. The host gives `root`, and
// `step`, an object of its own.

var kInt = 2, kString = 5, kArray = 4097;
var kConverted = 1967709;  // what a notice says of a value that was converted

function expect(what, actual, expected) {
    if (actual !== expected) throw new Error(what + ": " + actual + ", not " + expected);
}
function code(call) {
    try { call(); } catch (error) { return error.number & 0xFFFF; }
    return 0;
}

// Templates: a set is filled with texts, here behind a stream that holds none.
var bytes = root.NewBag();
bytes.FromJson('{"none":{".type":"stream",".value":"QUJD"}}');
var stream = bytes.GetRootItem().GetStreamAt("none", null);
var set = root.NewTemplateSetFromStream(stream);
set.Load('<CabTemplate version="1.0"><Root id="Page" type="Dictionary" itemSet="All"/>' +
         '<ItemSet id="All"><Item id="width" type="Int" defVal="210"/>' +
         '<Item id="title" type="String" defVal="none"/></ItemSet></CabTemplate>');
expect("no template", code(function () { set.Load("<Other/>"); }) !== 0, true);
var page = root.NewBagFromTemplateSet(set, "Page"), top = page.GetRootItem();
expect("default", top.GetIntAt("width", 0), 210);
expect("at default", top.Item("width").IsAtDefault(), true);
top.SetIntAt("width", 297);
expect("changed", page.ToJson(1), '{"width":297}');
page.Rebuild();
expect("an item that has gone", code(function () { top.GetKind(); }), 0x4005);
expect("default again", page.GetRootItem().GetStringAt("title", ""), "none");

// A free bag grows as it is written.
var bag = root.NewBag(), item = bag.GetRootItem();
var missing = item.Item("a.b");
expect("missing", missing.IsPresent(), 0);
missing.PutInt(5);
expect("present", missing.IsPresent(), 1);
item.SetStringAt("name", "sky");
item.SetBoolAt("on", true);
item.SetDoubleAt("half", 0.5);
item.SetObjectAt("thing", step);
var list = item.GetOrAdd("list", kArray);
for (var i = 0; i < 3; ++i) list.Append(kInt).PutValue(i * i);
list.GetOrAddWithValue(0, 0, "first");
list.Move(0, 4, 1);
list.Remove(1);

// Read by name, by index, and one after the other.
var read = [];
for (var i = 0; i < item.GetCount(); ++i) {
    var child = item.Item(item.KeyAt(i));
    read.push(item.KeyAt(i) + ":" + child.GetKind());
}
expect("children", read.join(" "), "a:4098 on:1 half:4 list:4097 name:5 thing:7");
read = [];
for (var i = 0; i < list.GetCount(); ++i) read.push(list.Item(i).GetValue());
expect("elements", read.join("|"), "0|4|first");
expect("an object", item.GetObjectAt("thing", null) !== null, true);
expect("a child's value is its object", item.Item("list").GetValue().GetCount(), 3);
expect("missing", item.GetIntAt("none", 7), 7);
expect("exists", item.Exists("a.b", kInt), true);
expect("of another kind", item.Exists("a.b", kString), false);

// Conversions succeed with a notice; refusals are errors.
var number = item.Item("a.b");
number.PutDouble(2);
expect("converted", number.GetLastStatus(), kConverted);
number.PutInt(3);
expect("not converted", number.GetLastStatus(), 0);
expect("refused", code(function () { number.PutDouble(2.5); }), 0x0057);
expect("no list", code(function () { number.Append(kInt); }), 0x0057);
expect("unchanged", number.GetInt(), 3);
expect("no store", code(function () { bag.LoadStream(stream, true); }), 0x4005);

// Out and in again: a registry key, and JSON.
item.Remove("thing");
var json = '{"a":{"b":3},"on":true,"half":{".type":"double",".value":0.5},' +
           '"list":[0,4,"first"],"name":"sky"}';
expect("text", bag.ToJson(0), json);
bag.SaveRegistry("HKCU\\Software\\Quvada script", 0);
var loaded = root.NewBag(), parsed = root.NewBag();
loaded.LoadRegistry("HKCU\\Software\\Quvada script", 0);
expect("loaded", loaded.ToJson(0), json);
parsed.FromJson(json);
expect("parsed", parsed.GetRootItem().IsEqual(item), true);
expect("no object", code(function () { parsed.FromJson("[1]"); }), 0x4005);
var copy = parsed.GetRootItem();
copy.Item("list").Assign(item.Item("list"));
copy.Reset();
expect("other", copy.IsEqual(item), false);
