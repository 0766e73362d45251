"""Serves a folder of music with supysonic on a port of loopback until standard input ends.

usage: serve_music.py STATE MUSIC PORT
"""
import os
import sys
import threading

from pony.orm import db_session
from supysonic.config import IniConfig
from supysonic.managers.folder import FolderManager
from supysonic.managers.user import UserManager
from supysonic.scanner import Scanner
from supysonic.web import create_application
from werkzeug.serving import run_simple


def end_with_input():
    sys.stdin.read()
    os._exit(0)


def settings(state):
    path = os.path.join(state, "supysonic.conf")
    os.makedirs(state, exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(
            f"[base]\ndatabase_uri = sqlite:///{state}/supysonic.db\n"
            f"[webapp]\ncache_dir = {state}/cache\nmount_webui = no\n"
            f"[daemon]\nsocket = {state}/none\nrun_watcher = no\n"
        )
    return IniConfig([path])


def main():
    state, music, port = sys.argv[1:]
    threading.Thread(target=end_with_input, daemon=True).start()
    application = create_application(settings(state))
    with db_session:
        UserManager.add("ann", "s3cret")
        FolderManager.add("Music", music)
    scanner = Scanner()
    scanner.queue_folder("Music")
    scanner.run()
    run_simple("127.0.0.1", int(port), application, threaded=True)


main()
