"""Puts messages into the folder that is named, and prints what is in them as JSON: the judge is Python's own library."""
import base64
import email
import email.message
import email.policy
import json
import pathlib
import sys


def with_polish_letters():
    message = email.message.EmailMessage()
    message["From"] = "Łukasz Żak <lukasz@firma.example>"
    message["Subject"] = "Zażółć gęślą jaźń: faktura za październik, druga już tego miesiąca, proszę o zapłatę"
    message.set_content("Dzień dobry\n.kropka\n..dwie\n\nŁukasz\n")
    message.add_attachment(bytes(range(256)) * 30, maintype="application", subtype="pdf", filename="Zażółć gęślą.pdf")
    return message


def with_equal_names():
    message = email.message.EmailMessage()
    message["Subject"] = "raz i dwa"
    message.set_content("tekst\n")
    message.add_alternative("<p>tekst</p>", subtype="html")
    for content in (b"raz", b"dwa"):
        message.add_attachment(content, maintype="application", subtype="xml", filename="FA.xml")
    return message


def forwarded():
    message = email.message.EmailMessage()
    message["Subject"] = "Fwd"
    message.set_content("patrz\n", charset="iso-8859-2", cte="8bit")
    message.add_attachment(with_equal_names(), filename="list.eml")
    return message


def content_of(part):
    if part.get_content_type() == "message/rfc822":
        return part.get_payload(0).as_bytes(policy=email.policy.SMTP)
    return part.get_payload(decode=True)


def described(data):
    message = email.message_from_bytes(data, policy=email.policy.default)
    files, taken = {}, {}
    for part in message.iter_attachments():
        name = part.get_filename()
        taken[name] = taken.get(name, 0) + 1
        if taken[name] > 1:
            path = pathlib.PurePath(name)
            name = f"{path.stem} ({taken[name]}){path.suffix}"
        files[name] = base64.b64encode(content_of(part)).decode()
    text = message.get_body(("plain",)).get_content()
    return {"subject": message["Subject"], "text": text, "files": files}


folder = pathlib.Path(sys.argv[1])
descriptions = []
for number, make in enumerate((with_polish_letters, with_equal_names, forwarded)):
    data = make().as_bytes(policy=email.policy.SMTP)
    (folder / f"1000{number}.M1.host").write_bytes(data)
    descriptions.append(described(data))
print(json.dumps(descriptions))
