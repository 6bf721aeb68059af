#!/usr/bin/python3
"""docs/openapi.yaml and the running service say the same: the paths, the methods, who needs a session, and what every
answer looks like.

    openapi_test.py BINARY
"""

import json
import re
import sys
import unittest
from pathlib import Path

import jsonschema
import yaml

sys.dont_write_bytecode = True

from harness import Service  # noqa: E402

BINARY = sys.argv.pop(1)
ROOT = Path(__file__).resolve().parents[3]
DESCRIBED = yaml.safe_load((ROOT / "docs/openapi.yaml").read_text(encoding="utf-8"))
METHODS = {"get", "post", "delete"}


def resolved(node):
    """The node with what it refers to in place of the references."""
    if isinstance(node, dict) and "$ref" in node:
        target = DESCRIBED
        for name in node["$ref"].removeprefix("#/").split("/"):
            target = target[name]
        return resolved(target)
    if isinstance(node, dict):
        return {key: resolved(value) for key, value in node.items()}
    return [resolved(value) for value in node] if isinstance(node, list) else node


class OpenApiTest(unittest.TestCase):
    def setUp(self):
        self.service = Service(BINARY)
        self.addCleanup(self.service.stop)
        self.token = self.service.sign_in("ana@example.org")

    def assert_described(self, operation: dict, answer):
        status, body = answer
        self.assertIn(str(status), operation["responses"], body)
        [schema] = [content["schema"] for content in operation["responses"][str(status)]["content"].values()]
        jsonschema.validate(body, schema)

    def test_every_path_and_only_these(self):
        served = set(re.findall(r'request_seconds_total{route="([^"]+)"}', self.service.call("GET", "/metrics")[1]))
        self.assertEqual(served - {"other"}, set(DESCRIBED["paths"]))

    def test_every_answer_is_as_described(self):
        seen = 0
        for path, described in DESCRIBED["paths"].items():
            operations = {method: resolved(operation) for method, operation in described.items()}
            for method in METHODS - set(operations):
                self.assertEqual(self.service.call(method.upper(), path)[0], 405, path)
            for method, operation in operations.items():
                with self.subTest(f"{method} {path}"):
                    self.try_operation(method.upper(), path, operation)
                    seen += 1
        self.assertGreater(seen, 15)

    def try_operation(self, method: str, path: str, operation: dict):
        for parameter in operation.get("parameters", []):
            path = path.replace("{" + parameter["name"] + "}", parameter["example"])
        needs_session = operation.get("security", DESCRIBED["security"]) != []
        # Another session than the one that ends with a logout.
        token = self.service.sign_in("berta@example.org") if path.endswith("logout") else self.token
        body = None
        if request := operation.get("requestBody"):
            content = request["content"]["application/json"]
            body = content["example"]
            jsonschema.validate(body, content["schema"])
            broken = self.service.call(method, path, {}, token)
            self.assertEqual(broken[0], 400, broken)
            self.assert_described(operation, broken)
        if needs_session:
            refused = self.service.call(method, path, body)
            self.assertEqual(refused[0], 401)
            self.assert_described(operation, refused)
        answer = self.service.call(method, path, body, token if needs_session else "")
        self.assertNotIn(answer[0], (400, 401), answer)
        self.assert_described(operation, answer)
        if "200" in operation["responses"] and answer[0] != 200:
            self.assertIn(answer[0], (403, 404, 501), json.dumps(answer))


unittest.main()
