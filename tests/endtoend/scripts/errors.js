// What a script learns of calls that fail.
function failureOf(action) {
    try {
        action();
    } catch (error) {
        return error;
    }
    return null;
}

var proxy = new ActiveXObject("VelkCOMAdapter.VelkCOMProxy");
var words = proxy.CreateObject("scripting.dictionary");
words.Add("key", 1);

var failure = failureOf(function () { words.Add("key", 2); });
check("adding a key twice fails", true, failure !== null);
check("an unknown member fails", true, failureOf(function () { words.NoSuchMember(); }) !== null);
check("a missing argument fails", true, failureOf(function () { words.Add("only"); }) !== null);
check("an unknown class fails", true,
      failureOf(function () { new ActiveXObject("VelkCOMAdapter.NoSuchClass"); }) !== null);
check("nothing was changed", 1, words.Count());
check("a call after the failures", 1, words.Item("key"));
proxy.TerminateApplication();
