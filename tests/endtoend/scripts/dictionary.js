// A late-bound client in JScript: the host's dictionary, through the proxy.
function fails(action) {
    try {
        action();
    } catch (error) {
        return true;
    }
    return false;
}

var proxy = new ActiveXObject("VelkCOMAdapter.VelkCOMProxy");
var words = proxy.CreateObject("scripting.dictionary");

check("a new dictionary is empty", 0, words.Count());
words.Add("the", 1);
words.Add("of", 2.5);
check("Count after two Add", 2, words.Count());
check("Item of an integer", 1, words.Item("the"));
check("Item of a floating point number", 2.5, words.Item("of"));
words.Add("text", "gr\u00fcn");
check("a text beyond ASCII", "gr\u00fcn", words.Item("text"));

var nested = proxy.CreateObject("scripting.dictionary");
nested.Add("inner", "value");
words.Add("nested", nested);
check("a member of an object in the dictionary", "value", words.Item("nested").Item("inner"));

check("an unknown member fails", true, fails(function () { words.NoSuchMember(); }));
check("adding a key twice fails", true, fails(function () { words.Add("the", 1); }));
check("Count after the failures", 4, words.Count());

proxy.TerminateApplication();
