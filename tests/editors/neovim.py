#!/usr/bin/env python3
"""The language server in Neovim, with the settings that the manual prints: neovim.py LEXON_LAB. Ends with 77 without
Neovim."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Each row is written as it is reached, so that the one that hangs is known.
SESSION = r"""
local function row(name, is_so, found)
  io.write((is_so and "ok " or "FAILED ") .. name .. (is_so and "" or ": " .. vim.inspect(found)) .. "\n")
end
local function wait(wanted) return vim.wait(15000, wanted, 20) end
local function at(text, column)
  vim.fn.cursor(1, 1)
  vim.fn.search("\\V" .. text, "cW")
  vim.fn.cursor(vim.fn.line("."), vim.fn.col(".") + column)
end
local function text() return table.concat(vim.api.nvim_buf_get_lines(0, 0, -1, true), "\n") end

vim.cmd("edit rules.txt")
row("the type of rules", vim.bo.filetype == "lexon", vim.bo.filetype)
row("a server", wait(function() return #vim.lsp.buf_get_clients(0) == 1 and vim.lsp.buf_get_clients(0)[1] ~= nil end), vim.lsp.buf_get_clients(0))
vim.api.nvim_buf_set_lines(0, 0, 0, true, { "R{[\240\157\132\158],@pasd} {N} P1;" })
local found
wait(function()
  found = vim.tbl_filter(function(each) return each.code == "unknown-name" end, vim.diagnostic.get(0))
  return #found > 0
end)
row("a slip is found, behind a character of two units", #found == 1 and found[1].lnum == 0 and found[1].col == 9, found)
vim.api.nvim_buf_set_lines(0, 0, 1, true, { ":{@pa" })
vim.api.nvim_win_set_cursor(0, { 1, 4 })
local place = vim.lsp.util.make_position_params()
place.position.character = 5
found = vim.lsp.buf_request_sync(0, "textDocument/completion", place, 15000)
local words = found and found[1] and vim.tbl_map(function(each) return each.label end, found[1].result.items) or {}
row("completion", vim.tbl_contains(words, "@past"), found)
vim.api.nvim_buf_set_lines(0, 0, 1, true, {})
at("V,PAST,@past", 8)
vim.lsp.buf.hover()
local shown
wait(function()
  for _, window in ipairs(vim.api.nvim_list_wins()) do
    if vim.api.nvim_win_get_config(window).relative ~= "" then shown = window end
  end
  return shown ~= nil
end)
local lines = shown and table.concat(vim.api.nvim_buf_get_lines(vim.api.nvim_win_get_buf(shown), 0, -1, true), "\n") or ""
row("hover", lines:find("attribute `?@past`?") and lines:find("asked for by"), lines)
if shown then vim.api.nvim_win_close(shown, true) end
vim.cmd("edit input.txt")
wait(function() return #vim.lsp.buf_get_clients(0) == 1 end)
at("dog(>animal)", 1)
vim.lsp.buf.definition()
wait(function() return #vim.fn.getqflist() > 0 end)
found = vim.tbl_map(function(each) return vim.fn.bufname(each.bufnr) .. ":" .. each.text end, vim.fn.getqflist())
row("definition", found[1] and found[1]:find("entries.txt:[dog]", 1, true), found)
vim.cmd("cclose | edit rules.txt")
at("V,PAST,@past", 8)
vim.lsp.buf.rename("@gone")
row("rename here", wait(function() return text():find("V,PAST,@gone", 1, true) end), "")
vim.cmd("edit input.txt")
row("and in a file that is open besides", text():find("@gone") and not text():find("@past"), "")
vim.lsp.stop_client(vim.lsp.get_active_clients())
row("the server ends", wait(function() return #vim.lsp.get_active_clients() == 0 end), "")
vim.cmd("qall!")
"""


def main():
    neovim = shutil.which("nvim")
    if neovim is None:
        print("skipped: nvim is missing and could not be installed")
        return 77
    blocks = re.findall(r"```lua\n(.*?)```", (ROOT / "docs" / "editors.md").read_text(), re.S)
    settings = [block for block in blocks if "vim.lsp.config" not in block]
    with tempfile.TemporaryDirectory() as name:
        work = pathlib.Path(name).resolve()
        for each in ("rules.txt", "entries.txt", "cr.txt", "input.txt"):
            shutil.copy(ROOT / "examples" / "english" / each, work)
        (work / "init.lua").write_text("\n".join(settings) + "\nvim.opt.hidden = true\nvim.opt.swapfile = false\n")
        (work / "session.lua").write_text(SESSION)
        places = {f"XDG_{kind}_HOME": str(work / kind) for kind in ("CONFIG", "DATA", "STATE", "CACHE")}
        path = os.pathsep.join([str(pathlib.Path(sys.argv[1]).resolve().parent), os.environ["PATH"]])
        ran = subprocess.run([neovim, "--headless", "-u", "init.lua", "-c", "luafile session.lua"], cwd=work, text=True,
                             env=os.environ | places | {"PATH": path}, capture_output=True, timeout=200)
    print(ran.stdout, ran.stderr)
    rows = re.findall(r"^(ok|FAILED) ", ran.stdout, re.M)
    return 0 if ran.returncode == 0 and rows.count("ok") == SESSION.count("\nrow(") and "FAILED" not in rows else 1


sys.exit(main())
