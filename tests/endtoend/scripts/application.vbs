' The life of the host application: named before it starts, ended, started
' again, shared by all proxies.
Dim proxy, other, words, found
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
proxy.TerminateApplication
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy.1")
proxy.InitApplication "first", "1.0"
Set words = proxy.CreateObject("scripting.dictionary")
words.Add "key", "value"
Check "an object of the first application", "value", words.Item("key")
Set words = Nothing

proxy.TerminateApplication
proxy.TerminateApplication
proxy.InitApplication "second", "2.0"
proxy.InitApplication "ignored while it runs", "3.0"
Set words = proxy.CreateObject("scripting.dictionary")
words.Add "key", "again"
Check "an object of the second application", "again", words.Item("key")

Set other = CreateObject("VelkCOMAdapter.VelkCOMProxy")
Set found = other.CreateObject("scripting.dictionary")
Check "another proxy of the same application", 0, found.Count
Set found = proxy.GetObject("no.such.object")
Check "GetObject of nothing", True, found Is Nothing
Set found = proxy.CreateObject("no.such.object")
Check "CreateObject of nothing", True, found Is Nothing

other.TerminateApplication
Check "an object outlives its application", "again", words.Item("key")
Set words = other.CreateObject("scripting.dictionary")
Check "the application starts again by itself", 0, words.Count
Set words = Nothing
proxy.TerminateApplication
