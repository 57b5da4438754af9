// The life of the host application: started by the first object, ended,
// started again, and ended. Other scripts leave it running.
var proxy = new ActiveXObject("VelkCOMAdapter.VelkCOMProxy");
for (var round = 1; round <= 2; ++round) {
    var words = proxy.CreateObject("scripting.dictionary");
    words.Add("round", round);
    check("an object of application " + round, round, words.Item("round"));
    words = null;
    if (round === 1) proxy.TerminateApplication();
}
check("GetObject of nothing", null, proxy.GetObject("no.such.object"));
check("CreateObject of nothing", null, proxy.CreateObject("no.such.object"));

proxy.TerminateApplication();
