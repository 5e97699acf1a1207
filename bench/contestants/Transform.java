// Transform.java FACTORY STYLESHEET INPUT OUTPUT: each line's document through XSLT in Java, the stylesheet compiled
// once. FACTORY: the class of a javax.xml.transform.TransformerFactory, or "jdk" for the JDK's own compiler, XSLTC.
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.FileOutputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import javax.xml.transform.OutputKeys;
import javax.xml.transform.Templates;
import javax.xml.transform.Transformer;
import javax.xml.transform.TransformerFactory;
import javax.xml.transform.stream.StreamResult;
import javax.xml.transform.stream.StreamSource;

public final class Transform {
  public static void main(String[] arguments) throws Exception {
    Transformer transformer = templates(arguments[0], arguments[1]).newTransformer();
    boolean isText = "text".equals(transformer.getOutputProperty(OutputKeys.METHOD));
    byte[] input = Files.readAllBytes(Path.of(arguments[2]));
    ByteArrayOutputStream output = new ByteArrayOutputStream(2 * input.length);
    for (int from = 0; from < input.length;) {
      int end = from;
      while (input[end] != '\n') ++end;
      transformer.transform(new StreamSource(new ByteArrayInputStream(input, from, end - from)),
          new StreamResult(output));
      if (!isText) output.write('\n');
      from = end + 1;
    }
    try (OutputStream file = new FileOutputStream(arguments[3])) {
      output.writeTo(file);
    }
  }

  private static Templates templates(String factory, String stylesheet) throws Exception {
    TransformerFactory made = factory.equals("jdk") ? TransformerFactory.newDefaultInstance()
                                                    : TransformerFactory.newInstance(factory, null);
    return made.newTemplates(new StreamSource(new File(stylesheet)));
  }
}
