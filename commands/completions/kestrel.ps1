# PowerShell completion for kestrel. In $PROFILE:
#   kestrel completions powershell | Out-String | Invoke-Expression
# An empty argument does not reach a program from Windows PowerShell, hence the equals sign before the word. Where
# nothing is offered, PowerShell completes names of files by itself.
Register-ArgumentCompleter -Native -CommandName kestrel, kestrel.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $program = $commandAst.GetCommandName()
    $current = "$wordToComplete".Trim('"', "'")
    $before = @($commandAst.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $cursorPosition } | ForEach-Object {
            if ($_ -is [System.Management.Automation.Language.StringConstantExpressionAst]) { $_.Value }
            else { $_.Extent.Text }
        })
    & $program complete "=$current" @before 2>$null | Where-Object { $_ -ne ':files' } | ForEach-Object {
        $word, $meaning = $_ -split "`t", 2
        if (-not $meaning) { $meaning = $word }
        $text = $word
        if ($word -match '[^\w=:.+/\\-]') { $text = "'" + $word.Replace("'", "''") + "'" }
        [System.Management.Automation.CompletionResult]::new($text, $word, 'ParameterValue', $meaning)
    }
}
