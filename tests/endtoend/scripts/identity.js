// Objects that cross the bridge come back as themselves.
var proxy = new ActiveXObject("VelkCOMAdapter.VelkCOMProxy");
var outer = proxy.CreateObject("scripting.dictionary");
var inner = proxy.CreateObject("scripting.dictionary");
outer.Add("inner", inner);
outer.Item("inner").Add("through the way back", 1);
check("the object behind both", 1, inner.Count());
inner = null;
CollectGarbage();
check("the dictionary holds its object", 1, outer.Item("inner").Count());

var list = outer.Keys();
check("a list of the host", 1, list.Count());
check("and what is in it", "inner", list.Item(0));
outer = null;
CollectGarbage();
check("a list outlives its dictionary", "inner", list.Item(0));
proxy.TerminateApplication();
