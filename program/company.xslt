<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the company header that tops every mailed document and every preview page.

  Receives the company record, a CompanyRet element (from QuickBooks' company query or
  from companyinfo.xml; given a whole document, its first CompanyRet is used), and writes
  an HTML fragment: the company's name and address, its phone, fax, e-mail address and web
  site, and optionally its logo.

  Parameter:
    logo  the address of a logo image in the program folder, as a file:// URL
          (file:///home/me/dorvane/logo.gif). Mail carries an image inline only when the HTML
          refers to it by an absolute address like that. Empty: no logo.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:param name="logo" select="''"/>

  <xsl:template match="/">
    <xsl:apply-templates select="(//CompanyRet)[1]"/>
  </xsl:template>

  <xsl:template match="CompanyRet">
    <xsl:variable name="name">
      <xsl:choose>
        <xsl:when test="normalize-space(CompanyName) != ''"><xsl:value-of select="CompanyName"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="LegalCompanyName"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <!-- the address QuickBooks shows to customers first, then the company's, then the legal one -->
    <xsl:variable name="address"
        select="(CompanyAddressForCustomer[*[normalize-space(.) != '']]
                 | Address[*[normalize-space(.) != '']]
                 | LegalAddress[*[normalize-space(.) != '']])[1]"/>
    <!-- a record with nothing filled in (the blank one of companyinfo.xml) makes no header -->
    <xsl:if test="normalize-space(concat($name, $address, Phone, Fax, Email, CompanyWebSite, $logo)) != ''">
      <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
        <tr>
          <xsl:if test="normalize-space($logo) != ''">
            <td valign="middle" style="padding:0 18px 14px 0;width:1px;">
              <img src="{$logo}" alt="{$name}" border="0" style="display:block;border:0;max-width:220px;max-height:80px;"/>
            </td>
          </xsl:if>
          <td valign="top" style="padding:0 0 14px 0;">
            <xsl:if test="normalize-space($name) != ''">
              <div style="font-size:20px;font-weight:bold;color:{$accent};"><xsl:value-of select="$name"/></div>
            </xsl:if>
            <div style="color:{$muted};">
              <!-- QuickBooks often repeats the company's name as the first address line -->
              <xsl:for-each select="$address/Addr1 | $address/Addr2 | $address/Addr3 | $address/Addr4">
                <xsl:if test="normalize-space(.) != '' and normalize-space(.) != normalize-space($name)">
                  <xsl:value-of select="."/><br/>
                </xsl:if>
              </xsl:for-each>
              <xsl:variable name="city" select="normalize-space($address/City)"/>
              <xsl:variable name="state" select="normalize-space(concat($address/State, ' ', $address/PostalCode))"/>
              <xsl:value-of select="$city"/>
              <xsl:if test="$city != '' and $state != ''">, </xsl:if>
              <xsl:value-of select="$state"/>
            </div>
          </td>
          <td valign="top" align="right" style="padding:0 0 14px 12px;font-size:12px;color:{$muted};white-space:nowrap;">
            <xsl:if test="normalize-space(Phone) != ''">
              <xsl:text>Phone </xsl:text><xsl:value-of select="Phone"/><br/>
            </xsl:if>
            <xsl:if test="normalize-space(Fax) != ''">
              <xsl:text>Fax </xsl:text><xsl:value-of select="Fax"/><br/>
            </xsl:if>
            <xsl:if test="normalize-space(Email) != ''">
              <a href="mailto:{normalize-space(Email)}" style="color:{$accent};text-decoration:none;"><xsl:value-of select="Email"/></a><br/>
            </xsl:if>
            <xsl:call-template name="web-site">
              <xsl:with-param name="site" select="normalize-space(CompanyWebSite)"/>
            </xsl:call-template>
          </td>
        </tr>
        <tr>
          <td colspan="2" style="padding:0;border-top:3px solid {$accent};height:22px;font-size:1px;line-height:1px;">
            <xsl:if test="normalize-space($logo) != ''"><xsl:attribute name="colspan">3</xsl:attribute></xsl:if>
            <xsl:text>&#160;</xsl:text>
          </td>
        </tr>
      </table>
    </xsl:if>
  </xsl:template>

  <!-- The web site as a link when it is a web address, otherwise as plain text. -->
  <xsl:template name="web-site">
    <xsl:param name="site"/>
    <xsl:variable name="lower" select="translate($site, 'ABCDEFGHIJKLMNOPQRSTUVWXYZ', 'abcdefghijklmnopqrstuvwxyz')"/>
    <xsl:choose>
      <xsl:when test="$site = ''"/>
      <xsl:when test="starts-with($lower, 'http://') or starts-with($lower, 'https://')">
        <a href="{$site}" style="color:{$accent};text-decoration:none;"><xsl:value-of select="$site"/></a><br/>
      </xsl:when>
      <xsl:when test="starts-with($lower, 'www.')">
        <a href="http://{$site}" style="color:{$accent};text-decoration:none;"><xsl:value-of select="$site"/></a><br/>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$site"/><br/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

</xsl:stylesheet>
