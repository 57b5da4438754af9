' Reads of a property by a script: of a dictionary of the host, through the
' bridge, against the system's own dictionary, and the empty loop. Prints one
' line a round: the seconds that each loop of 100,000 took.
Option Explicit
Const reads = 100000
Const rounds = 9
Dim proxy, ours, theirs, round, line
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
proxy.InitApplication "benchmark", "1.0"
Set ours = proxy.CreateObject("scripting.dictionary")
Set theirs = CreateObject("Scripting.Dictionary")
ours.Add "the", 1
theirs.Add "the", 1
' In turn, so that a slow moment of the machine falls on all alike.
For round = 1 To rounds
    line = TimeOfEmptyLoop
    line = line & " " & TimeOfCount(ours) & " " & TimeOfCount(theirs)
    line = line & " " & TimeOfItem(ours) & " " & TimeOfItem(theirs)
    WScript.Echo line
Next
proxy.TerminateApplication

Function TimeOfEmptyLoop
    Dim start, index
    start = Timer
    For index = 1 To reads
    Next
    TimeOfEmptyLoop = Timer - start
End Function

Function TimeOfCount(dictionary)
    Dim start, index, value
    start = Timer
    For index = 1 To reads
        value = dictionary.Count
    Next
    TimeOfCount = Timer - start
    If value <> 1 Then WScript.Echo "wrong count: " & value
End Function

Function TimeOfItem(dictionary)
    Dim start, index, value
    start = Timer
    For index = 1 To reads
        value = dictionary.Item("the")
    Next
    TimeOfItem = Timer - start
    If value <> 1 Then WScript.Echo "wrong item: " & value
End Function
