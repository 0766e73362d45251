#!/usr/bin/env python3
"""Stands in for the desktop's store of passwords on the session bus: secrets.py ANSWER LOG

Its keyring is locked. Unlocking takes a prompt, to which the user says what the file ANSWER says:
"yes", "no", or Ctrl-C in the program that asks. What happens to the prompt goes to the log.
"""
import os
import signal
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SECRET = "org.freedesktop.Secret"
ROOT = "/org/freedesktop/secrets"
KEYRING = ROOT + "/collection/login"
ITEM = KEYRING + "/1"
PROMPT = ROOT + "/prompt/1"
answer, log = sys.argv[1:]
items = []  # attributes and secret of the one that there may be
state = {"locked": True}


def note(text):
    with open(log, "a", encoding="utf-8") as file:
        file.write(text + "\n")


class Object(dbus.service.Object):
    @dbus.service.method(SECRET + ".Service", in_signature="sv", out_signature="vo")
    def OpenSession(self, algorithm, value):
        return dbus.String("", variant_level=1), dbus.ObjectPath(ROOT + "/session")

    @dbus.service.method(SECRET + ".Service", in_signature="s", out_signature="o")
    def ReadAlias(self, alias):
        return dbus.ObjectPath(KEYRING)

    @dbus.service.method(SECRET + ".Service", in_signature="a{ss}", out_signature="aoao")
    def SearchItems(self, attributes):
        found = dbus.Array([ITEM] if items and items[0] == attributes else [], signature="o")
        none = dbus.Array([], signature="o")
        return (none, found) if state["locked"] else (found, none)

    @dbus.service.method(SECRET + ".Service", in_signature="ao", out_signature="aoo")
    def Unlock(self, objects):
        if not state["locked"]:
            return objects, dbus.ObjectPath("/")
        return dbus.Array([], signature="o"), dbus.ObjectPath(PROMPT)

    @dbus.service.method(SECRET + ".Service", in_signature="ao", out_signature="aoo")
    def Lock(self, objects):
        state["locked"] = True
        return objects, dbus.ObjectPath("/")

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return state["locked"]

    @dbus.service.method(SECRET + ".Prompt", in_signature="s", sender_keyword="sender")
    def Prompt(self, window, sender):
        note("asked")
        with open(answer, encoding="utf-8") as file:
            said = file.read()
        if said == "Ctrl-C":
            os.kill(bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                      "GetConnectionUnixProcessID", "s", [sender]), signal.SIGINT)
            return
        state["locked"] = said == "no"
        GLib.timeout_add(200, self.Completed, said == "no", "")

    @dbus.service.method(SECRET + ".Prompt")
    def Dismiss(self):
        note("closed")

    @dbus.service.signal(SECRET + ".Prompt", signature="bv")
    def Completed(self, dismissed, result):
        return False

    @dbus.service.method(SECRET + ".Collection", in_signature="a{sv}(oayays)b", out_signature="oo")
    def CreateItem(self, properties, secret, replace):
        items[:] = [properties[SECRET + ".Item.Attributes"], secret]
        return dbus.ObjectPath(ITEM), dbus.ObjectPath("/")

    @dbus.service.method(SECRET + ".Item", in_signature="o", out_signature="(oayays)")
    def GetSecret(self, session):
        return items[1]


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
objects = [Object(bus, path) for path in (ROOT, KEYRING, ITEM, PROMPT)]
name = dbus.service.BusName("org.freedesktop.secrets", bus)
GLib.MainLoop().run()
