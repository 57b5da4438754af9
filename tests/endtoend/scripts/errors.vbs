' What a script learns of calls that fail.
Const noSuchMember = 438
Dim proxy, words, value
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
Set words = proxy.CreateObject("scripting.dictionary")
words.Add "key", 1

On Error Resume Next
words.NoSuchMember
Check "number of an unknown member", noSuchMember, Err.Number
Err.Clear
words.Add "key", 2
Check "source of a failure of the host", "VELKCOMADAPTER", Err.Source
Check "description of a failure of the host", True, InStr(Err.Description, "The key is already in the dictionary") > 0
Err.Clear
words.Remove "none"
Check "another failure tells its own", True, InStr(Err.Description, "The key is not in the dictionary") > 0
Err.Clear
words.Add "one argument"
Check "the wrong number of arguments", True, Err.Description <> ""
Err.Clear
proxy.CreateObject
Check "the wrong number of arguments for the proxy", True, Err.Number <> 0
Err.Clear
proxy.NoSuchMember
Check "an unknown member of the proxy", noSuchMember, Err.Number
Err.Clear
value = words.Item("key")
Check "a call that succeeds leaves no error", 0, Err.Number
On Error Goto 0
Check "the failures changed nothing", 1, words.Count
Check "nor the entry", 1, value
proxy.TerminateApplication
